#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "platform/terminal.h"
#include "simulator/board_series.h"
#include "simulator/rig_json.h"
#include "src/console.h"
#include "tools/messages.h"
#include "tools/progress_bar.h"

namespace ocpan {
namespace {

struct boards_options {
  std::string rig;
  std::string folder;
};

constexpr const char* footer =
    R"(OUT is a folder, made if need be. It gets the pictures, the configuration for
"oc_pan cal", the true calibration and a copy of the description.

Examples:
  oc_pan simulate preset 3-lens0 --out rig.json
  oc_pan simulate boards rig.json made
  oc_pan cal made/calibration.txt

Exit codes:
  0    done
  2    the rig's description isn't there
  3    a file can't be written
  4    the rig's description is malformed, or its boards find no place
  64   wrong usage
  255  internal failure)";

int make_boards(const boards_options& options) {
  rig_description rig;
  if (const std::string problem = read_rig_file(rig, options.rig); !problem.empty()) {
    std::error_code failure;
    const bool there = std::filesystem::exists(native_path(options.rig), failure);
    complain(problem, "; correct ", options.rig,
             ", or write a new one with oc_pan simulate preset");
    return there ? OCPAN_MALFORMED : OCPAN_INPUT;
  }
  const std::filesystem::path folder = native_path(options.folder);
  std::string problem;
  {
    progress_line bar(std::cerr, standard_error_is_terminal());
    problem = write_board_series(rig, folder.string(), [&](std::size_t done, std::size_t total) {
      bar.show(bar_text(static_cast<int>(done), static_cast<int>(total), "pictures"));
    });
  }
  if (problem.rfind("Couldn't", 0) == 0) {
    complain(problem, "; see that ", folder.string(), " may be written to, or name another one");
    return OCPAN_OUTPUT;
  }
  if (!problem.empty()) {
    complain(problem, "; correct ", options.rig, " or the folder's name");
    return OCPAN_MALFORMED;
  }
  print_line("Pictures           ", (folder / "pictures").string());
  print_line("Configuration      ", (folder / "calibration.txt").string());
  print_line("True calibration   ", (folder / "truth.cal").string());
  print_line("Description        ", (folder / "rig.json").string());
  return OCPAN_SUCCESS;
}

}  // namespace

void add_simulate_boards_command(CLI::App& simulate, int& exit_code) {
  const auto options = std::make_shared<boards_options>();
  CLI::App* command =
      simulate.add_subcommand("boards", "Render chessboard pictures of a rig, with the truth");
  command->add_option("RIG.json", options->rig, "The rig's description")
      ->type_name("FILE")
      ->required();
  command->add_option("OUT", options->folder, "The folder to write to")
      ->type_name("FOLDER")
      ->required();
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = make_boards(*options); });
}

}  // namespace ocpan

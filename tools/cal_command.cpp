#include <memory>

#include <CLI/CLI.hpp>

#include "platform/child_process.h"
#include "tools/cal_child.h"
#include "tools/cal_run.h"
#include "tools/common_options.h"
#include "tools/messages.h"

namespace ocpan {
namespace {

constexpr const char* footer =
    R"(CONFIG names the pictures, the cameras and the board; its relative names start from
the working folder. The calibration goes to its output_filename, with two reports
beside it; pictures of the boards found go to the folder tmp in the working folder.
With --refine a second calibration goes beside it, as oc_pan refine makes it: rig.cal
stays as it is, and rig_refined.cal is the one to use.

Examples:
  oc_pan cal rig.txt
  oc_pan cal rig.txt --quiet --json rig.json
  oc_pan cal rig.txt --refine

Exit codes:
  0    done, the files are written
  1    a camera of the configuration is incomplete
  2    an input can't be opened, or a picture is unusable
  3    an output can't be opened or written
  4    the configuration or an input is malformed
  5    out of memory
  6    a value is out of range (2 to 8 cameras), or no configuration is there
  10   with --refine: the refined calibration is doubtful
  11   with --refine: no refined calibration is written; the first one is
  64   wrong usage
  70   the child process couldn't be started, or ended without a result
  130  interrupted; other codes above 128 are 128 and the signal that ended the run
  255  internal failure)";

}  // namespace

void add_cal_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<cal_options>();
  CLI::App* command =
      tool.add_subcommand("cal", "Calibrate a rig from series of chessboard pictures");
  command->add_option("CONFIG", options->configuration, "The calibration's configuration file")
      ->type_name("FILE")
      ->required();
  add_quiet_flag(command, options->quiet, "the progress bar and the table stay");
  add_json_option(command, options->json);
  command->add_flag("--refine", options->refine,
                    "Refine as oc_pan refine does; into a file with _refined in its name");
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_cal(*options, own_program()); });
}

}  // namespace ocpan

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "tools/common_options.h"
#include "tools/messages.h"
#include "tools/output_check.h"
#include "tools/project/import_project.h"
#include "tools/text_output.h"

namespace ocpan {
namespace {

struct import_options {
  std::string in;
  std::string out;
  bool quiet = false;
};

constexpr const char* footer =
    R"(The common stitching tools and this library read the same letters of a project file, but
turn and shear from opposite sides. OUT holds numbers that make the library map as the tool
does with IN; links between pictures are replaced by what they lead to, and all else stays.
What can't be taken over is told with its line, and then nothing is written: a camera that is
moved, a lens that is neither rectilinear (f0) nor a fisheye (f2, f3), a malformed crop.

Examples:
  oc_pan import-project panorama.pto rig.pts
  oc_pan lut rig.pts masks/mask tables/lut --project-file

Exit codes:
  0    done, OUT is written; warnings name what the library leaves aside
  2    IN can't be opened or read
  3    OUT can't be written
  4    IN is malformed, has no i line, or is imported already
  6    IN holds what the library's project files can't
  64   wrong usage
  255  internal failure)";

int tell(const imported_project& project, const std::string& name) {
  int code = OCPAN_SUCCESS;
  for (const project_finding& finding : project.findings) {
    const std::string place = finding.line == 0 ? name : name + ":" + std::to_string(finding.line);
    complain(finding.code == OCPAN_SUCCESS ? "warning: " : "", place, ": ", finding.text);
    if (code == OCPAN_SUCCESS) code = finding.code;
  }
  return code;
}

int run_import(const import_options& options) {
  const std::string in_name = native_path(options.in), out_name = native_path(options.out);
  std::ifstream in = open_input(options.in);
  if (!in) {
    complain(in_name, " can't be opened; name a project file that is there and may be read");
    return OCPAN_INPUT;
  }
  std::error_code failure;
  if (std::filesystem::equivalent(in_name, out_name, failure)) {
    complain("IN and OUT are the same file; name another OUT, so that the tool's file stays");
    return exit_wrong_usage;
  }
  if (const std::string reason = why_not_writable(options.out); !reason.empty()) {
    complain("OUT: ", reason);
    return OCPAN_OUTPUT;
  }
  const imported_project project = import_project(in);
  if (in.bad()) {
    complain(in_name, " couldn't be read to its end; see that its disk is there");
    return OCPAN_INPUT;
  }
  if (const int code = tell(project, in_name)) return code;
  if (!write_text(options.out, project.text)) return OCPAN_OUTPUT;
  if (!options.quiet) {
    print_line("Project written: ", out_name, ", cameras: ", project.cameras);
  }
  return OCPAN_SUCCESS;
}

}  // namespace

void add_import_project_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<import_options>();
  CLI::App* command = tool.add_subcommand(
      "import-project", "Rewrite a stitching tool's project file for this library");
  command->add_option("IN", options->in, "A panorama project file")->type_name("FILE")->required();
  command->add_option("OUT", options->out, "The project file to write")
      ->type_name("FILE")
      ->required();
  add_quiet_flag(command, options->quiet, "warnings and failures stay");
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_import(*options); });
}

}  // namespace ocpan

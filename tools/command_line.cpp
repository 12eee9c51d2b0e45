#include "tools/command_line.h"

#include <CLI/CLI.hpp>

#include "tools/commands.h"
#include "tools/messages.h"

namespace ocpan {
namespace {

constexpr const char* footer =
    R"(oc_pan COMMAND --help tells more of a command, with examples.

Examples:
  oc_pan init pictures --out rig.txt
  oc_pan check rig.txt
  oc_pan cal rig.txt
  oc_pan report rig.cal rig.txt --out report.html

Exit codes:
  0    good
  1    a camera of a configuration is incomplete
  2    an input can't be opened, or a picture is unusable
  3    an output can't be opened or written
  4    an input is malformed
  5    out of memory
  6    a value is out of range
  10   doubtful, of commands that judge
  11   unusable, of commands that judge
  64   wrong usage
  70   a child process was lost
  130  interrupted; other codes above 128 are 128 and the signal that ended the run
  255  internal failure)";

}  // namespace

void add_commands(CLI::App& tool, int& exit_code) {
  tool.name("oc_pan");
  tool.description("Calibrates multi-camera panorama rigs.");
  tool.require_subcommand(1);
  tool.get_formatter()->label("SUBCOMMAND", "COMMAND");
  tool.get_formatter()->label("Subcommands", "Commands");
  tool.footer(footer);
  add_cal_child_command(tool, exit_code);
  add_cal_command(tool, exit_code);
  add_check_command(tool, exit_code);
  add_evaluate_command(tool, exit_code);
  add_export_command(tool, exit_code);
  add_import_project_command(tool, exit_code);
  add_init_command(tool, exit_code);
  add_lut_command(tool, exit_code);
  add_mask_command(tool, exit_code);
  add_osd_command(tool, exit_code);
  add_poly_command(tool, exit_code);
  add_preview_command(tool, exit_code);
  add_prod_child_command(tool, exit_code);
  add_prod_command(tool, exit_code);
  add_refine_command(tool, exit_code);
  add_report_command(tool, exit_code);
  add_simulate_command(tool, exit_code);
  add_verify_command(tool, exit_code);
  add_version_command(tool, exit_code);
  add_view_yuv_command(tool, exit_code);
}

int run_command_line(int argc, const char* const* argv) {
  CLI::App tool;
  int exit_code = 0;
  add_commands(tool, exit_code);
  try {
    tool.parse(argc, argv);
  } catch (const CLI::ParseError& usage) {
    return tool.exit(usage) == 0 ? 0 : exit_wrong_usage;
  }
  return exit_code;
}

}  // namespace ocpan

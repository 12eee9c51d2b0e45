#include "tools/command_line.h"

#include "tools/commands.h"
#include "tools/messages.h"

namespace ocpan {

void add_commands(CLI::App& tool, int& exit_code) {
  tool.name("oc_pan");
  tool.description("Calibrates multi-camera panorama rigs.");
  tool.require_subcommand(1);
  tool.get_formatter()->label("SUBCOMMAND", "COMMAND");
  tool.get_formatter()->label("Subcommands", "Commands");
  tool.footer("oc_pan COMMAND --help tells more of a command, with examples.");
  add_cal_child_command(tool, exit_code);
  add_cal_command(tool, exit_code);
  add_evaluate_command(tool, exit_code);
  add_export_command(tool, exit_code);
  add_import_project_command(tool, exit_code);
  add_lut_command(tool, exit_code);
  add_mask_command(tool, exit_code);
  add_osd_command(tool, exit_code);
  add_poly_command(tool, exit_code);
  add_preview_command(tool, exit_code);
  add_prod_child_command(tool, exit_code);
  add_prod_command(tool, exit_code);
  add_simulate_command(tool, exit_code);
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

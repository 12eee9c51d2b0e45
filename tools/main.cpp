#include <iostream>

#include "tools/commands.h"
#include "tools/messages.h"

namespace {

int run(int argc, char** argv) {
  CLI::App tool("Calibrates multi-camera panorama rigs.", "oc_pan");
  tool.require_subcommand(1);
  tool.get_formatter()->label("SUBCOMMAND", "COMMAND");
  tool.get_formatter()->label("Subcommands", "Commands");
  tool.footer("oc_pan COMMAND --help tells more of a command, with examples.");
  int exit_code = 0;
  ocpan::add_cal_command(tool, exit_code);
  ocpan::add_cal_child_command(tool, exit_code);
  ocpan::add_simulate_command(tool, exit_code);
  ocpan::add_version_command(tool, exit_code);
  try {
    tool.parse(argc, argv);
  } catch (const CLI::ParseError& usage) {
    return tool.exit(usage) == 0 ? 0 : ocpan::exit_wrong_usage;
  }
  return exit_code;
}

}  // namespace

int main(int argc, char** argv) {
  int exit_code = 0;
  try {
    exit_code = run(argc, argv);
  } catch (const std::exception& failure) {
    ocpan::complain("unexpected failure: ", failure.what());
    return 255;
  }
  if (!std::cout.flush()) {
    ocpan::complain("standard output couldn't be written; free space where it goes");
    if (exit_code == 0) exit_code = 3;
  }
  return exit_code;
}

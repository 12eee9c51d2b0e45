#include <CLI/CLI.hpp>

#include "tools/commands.h"

namespace ocpan {

void add_simulate_command(CLI::App& tool, int& exit_code) {
  CLI::App* command =
      tool.add_subcommand("simulate", "Make pictures of a rig whose truth is known");
  command->require_subcommand(1);
  command->footer(R"(Examples:
  oc_pan simulate preset 3-lens0 --out rig.json
  oc_pan simulate boards rig.json made
  oc_pan cal made/calibration.txt

Exit codes:
  64   wrong usage; other codes are those of its commands)");
  add_simulate_boards_command(*command, exit_code);
  add_simulate_fixture_command(*command, exit_code);
  add_simulate_masks_command(*command, exit_code);
  add_simulate_preset_command(*command, exit_code);
  add_simulate_world_command(*command, exit_code);
}

}  // namespace ocpan

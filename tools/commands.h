#pragma once

namespace CLI {
class App;
}

namespace ocpan {

// Makes an empty application the tool with all its commands.
void add_commands(CLI::App& tool, int& exit_code);

// Included only where commands are put together, not by the commands' own sources: otherwise a
// new command would have all others compiled again, and each takes long because of CLI11.
//
// Each adds one command to the tool, or to a command that has commands of its own, with its
// options, its help and its examples. A command that runs leaves its exit code in
// `exit_code`.
void add_cal_child_command(CLI::App& tool, int& exit_code);
void add_cal_command(CLI::App& tool, int& exit_code);
void add_check_command(CLI::App& tool, int& exit_code);
void add_evaluate_command(CLI::App& tool, int& exit_code);
void add_export_command(CLI::App& tool, int& exit_code);
void add_import_project_command(CLI::App& tool, int& exit_code);
void add_init_command(CLI::App& tool, int& exit_code);
void add_lut_command(CLI::App& tool, int& exit_code);
void add_mask_command(CLI::App& tool, int& exit_code);
void add_osd_command(CLI::App& tool, int& exit_code);
void add_poly_command(CLI::App& tool, int& exit_code);
void add_preview_command(CLI::App& tool, int& exit_code);
void add_prod_child_command(CLI::App& tool, int& exit_code);
void add_prod_command(CLI::App& tool, int& exit_code);
void add_refine_command(CLI::App& tool, int& exit_code);
void add_report_command(CLI::App& tool, int& exit_code);
void add_simulate_boards_command(CLI::App& simulate, int& exit_code);
void add_simulate_command(CLI::App& tool, int& exit_code);
void add_simulate_fixture_command(CLI::App& simulate, int& exit_code);
void add_simulate_masks_command(CLI::App& simulate, int& exit_code);
void add_simulate_preset_command(CLI::App& simulate, int& exit_code);
void add_simulate_world_command(CLI::App& simulate, int& exit_code);
void add_verify_command(CLI::App& tool, int& exit_code);
void add_version_command(CLI::App& tool, int& exit_code);
void add_view_yuv_command(CLI::App& tool, int& exit_code);

}  // namespace ocpan

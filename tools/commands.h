#pragma once

#include <CLI/CLI.hpp>

namespace ocpan {

// Each adds one command to the tool, with its options, its help and its examples. A command
// that runs leaves its exit code in `exit_code`.
void add_version_command(CLI::App& tool, int& exit_code);

}  // namespace ocpan

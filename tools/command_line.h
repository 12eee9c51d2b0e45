#pragma once

namespace ocpan {

// Runs the command that the arguments of main() name, and gives the exit code.
int run_command_line(int argc, const char* const* argv);

}  // namespace ocpan

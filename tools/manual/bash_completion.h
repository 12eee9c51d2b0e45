#pragma once

#include <string>

#include "tools/manual/command_help.h"

namespace ocpan {

// A script for bash that completes the tool's commands, options and file names. It needs
// nothing but bash itself.
[[nodiscard]] std::string bash_completion(const command_help& tool);

}  // namespace ocpan

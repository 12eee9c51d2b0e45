#pragma once

#include <string>
#include <vector>

#include "tools/manual/command_help.h"

namespace ocpan {

// The name of a command's manual page: "oc_pan-simulate-boards".
[[nodiscard]] std::string page_name(const std::string& command_name);

// The manual page of a command, in section 1, from its help.
//
//   command   the command or the tool itself
//   tool      the whole tool, to name the pages of the commands that the help speaks of
//   version   for the page's foot
[[nodiscard]] std::string man_page(const command_help& command, const command_help& tool,
                                   const std::string& version);

// A text as the formatter of manual pages takes it: dashes stay dashes, quotes quotes, and
// no line is taken for a request.
[[nodiscard]] std::string roff_text(const std::string& text);

}  // namespace ocpan

#pragma once

#include <iostream>
#include <locale>
#include <sstream>

namespace ocpan {

// Exit codes of the tool beside the library's own.
inline constexpr int exit_child_lost = 70;  // the child process couldn't start, or broke off
inline constexpr int exit_wrong_usage = 64;

// Tells the user what went wrong and what to do: one line on standard error, behind the
// tool's name.
template <typename... Items>
void complain(const Items&... items) {
  std::ostringstream line;
  line.imbue(std::locale::classic());
  line << "oc_pan: ";
  (line << ... << items) << '\n';
  std::cerr << line.str() << std::flush;
}

}  // namespace ocpan

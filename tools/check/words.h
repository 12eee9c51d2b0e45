#pragma once

#include <locale>
#include <sstream>
#include <string>

namespace ocpan {

// The items side by side, numbers in the classic locale.
template <typename... Items>
std::string words(const Items&... items) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  (text << ... << items);
  return text.str();
}

}  // namespace ocpan

#pragma once

#include <locale>
#include <sstream>
#include <string>

namespace ocpan {

// Writes the text and a line end to the standard output stream and flushes it. Neither
// the flags nor the locale of the host program's std::cout play a part.
void write_line(const std::string& text);

// Prints the items side by side as one line, in the classic locale and the stream's
// default number format. Throws std::bad_alloc, and prints nothing, when there is no memory
// for the line.
template <typename... Items>
void print_line(const Items&... items) {
  std::ostringstream line;
  line.imbue(std::locale::classic());
  line.exceptions(std::ios::badbit);  // or a failed allocation would cut the line short
  (line << ... << items);
  write_line(line.str());
}

}  // namespace ocpan

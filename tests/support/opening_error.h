#pragma once

#include <sstream>
#include <string>

namespace ocpan::testing {

// What is printed for a folder that can't be listed, with a "\n".
//
//   error_number   errno as POSIX sets it; on Windows a listing doesn't, so that the 0 is
//                  printed to which the test has set errno before
inline std::string opening_error(int error_number, const std::string& search_text) {
#ifdef _WIN32
  error_number = 0;
#endif
  std::ostringstream line;
  line << "Error(" << error_number << ") opening " << search_text << "\n";
  return line.str();
}

}  // namespace ocpan::testing

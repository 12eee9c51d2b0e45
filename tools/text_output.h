#pragma once

#include <ios>
#include <string>
#include <string_view>

namespace ocpan {

// Writes a file that holds nothing but the text. If that fails it tells the user, what was
// begun is removed, and it gives false.
//
//   path   either kind of slash
//   mode   binary keeps ends of lines as they are, on Windows too
bool write_text(const std::string& path, std::string_view text,
                std::ios::openmode mode = std::ios::out);

}  // namespace ocpan

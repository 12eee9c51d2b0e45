#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ocpan {

// Appends the names of a folder's entries as the system gives them: without the folder, in
// no order, "." and ".." and subfolders among them.
//
//   names         gets the entries, also those read ahead of a failure
//   error_number  after a failure the C library's errno; on Windows whatever that holds,
//                 since the system's functions don't set it
//   folder        either kind of slash, with one at its end; empty for the working folder
//
// Gives false when the folder can't be opened or read.
[[nodiscard]] bool read_directory(std::vector<std::string>& names, int& error_number,
                                  std::string_view folder);

}  // namespace ocpan

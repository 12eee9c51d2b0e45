#pragma once

#include <string>

namespace ocpan {

// What lies under a path, after symbolic links. std::filesystem would tell too, but on
// Windows it takes a narrow name for UTF-8, and the C library's functions for one of the
// system's code page.
enum class file_kind { regular, folder, other };  // other: a device, or nothing at all

//   path   the operating system's form
file_kind kind_of_file(const std::string& path);

// Removes a regular file, the one that a symbolic link leads to and not the link. Leaves
// anything else alone. Takes no memory.
//
//   path   the operating system's form
void remove_regular_file(const std::string& path);

}  // namespace ocpan

#pragma once

#include <string>
#include <string_view>

namespace ocpan {

// The operating system's form of a path, to be used only where the path is opened and
// never printed: on POSIX each backslash becomes "/", on Windows the path stays.
std::string native_path(std::string_view path);

}  // namespace ocpan

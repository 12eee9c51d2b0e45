#pragma once

#include <string>

namespace ocpan {

// Makes a folder, and those above it, if it isn't there. Gives why it can't, with what to
// do about it; empty if it is there now.
//
//   path   either kind of slash
[[nodiscard]] std::string make_folder(const std::string& path);

}  // namespace ocpan

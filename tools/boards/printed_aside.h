#pragma once

#include <functional>
#include <string>

namespace ocpan {

// Runs a piece of the library and gives the lines that it printed instead of showing them.
// Nobody else may print meanwhile.
[[nodiscard]] std::string printed_aside(const std::function<void()>& work);

}  // namespace ocpan

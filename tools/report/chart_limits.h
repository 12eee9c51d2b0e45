#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "tools/report/markup.h"

namespace ocpan {

// Every so manieth of many things is drawn, so that no more than so many are.
[[nodiscard]] inline std::size_t stride_for(std::size_t count, std::size_t most) {
  return std::max<std::size_t>(1, (count + most - 1) / most);
}

// " One of 3 corners is drawn.", empty if all are.
[[nodiscard]] inline std::string drawn_share(std::size_t stride) {
  return stride == 1 ? "" : joined(" One of ", std::to_string(stride), " corners is drawn.");
}

// The colour of what stands out.
inline constexpr const char* far_colour = "#d55e00";

}  // namespace ocpan

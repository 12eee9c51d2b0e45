#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace ocpan {

// A number of a file cut off towards zero; held at the ends of int's range, and 0 for
// not-a-number.
inline int truncated(double value) {
  constexpr double low = std::numeric_limits<int>::min();
  constexpr double high = std::numeric_limits<int>::max();
  return std::isnan(value) ? 0 : static_cast<int>(std::clamp(value, low, high));
}

}  // namespace ocpan

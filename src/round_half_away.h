#pragma once

#include <cmath>

namespace ocpan {

// Rounds half away from zero: floor(x + 0.5) above zero, ceil(x - 0.5) otherwise and for
// not-a-number. Differs from the C library's round where x + 0.5 isn't exact:
// 0.49999999999999994 gives 1. It has a name of its own because "round" binds to the C
// library or the compiler's builtin even inside this library.
inline double round_half_away(double x) {
  return x > 0.0 ? std::floor(x + 0.5) : std::ceil(x - 0.5);
}

}  // namespace ocpan

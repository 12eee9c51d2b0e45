#pragma once

#include <array>
#include <vector>

namespace ocpan {

// The real roots of coefficients[0] + coefficients[1] z + ... + coefficients[4] z^4, by the
// eigenvalues of the companion matrix and in their order: those with an imaginary part
// below 1e-12. Leading coefficients of 0 are left out. None for a constant, and none where
// the coefficients by the leading one, or a root, aren't finite.
std::vector<double> real_roots(const std::array<double, 5>& coefficients);

}  // namespace ocpan

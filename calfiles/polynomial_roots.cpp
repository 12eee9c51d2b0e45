#include "calfiles/polynomial_roots.h"

#include <cmath>

#include <Eigen/Core>
#include <unsupported/Eigen/Polynomials>

namespace ocpan {

std::vector<double> real_roots(const std::array<double, 5>& coefficients) {
  constexpr double largest_imaginary_part = 1e-12;
  Eigen::Index degree = 4;
  while (degree > 0 && coefficients[static_cast<std::size_t>(degree)] == 0) --degree;
  if (degree == 0) return {};

  const Eigen::VectorXd polynomial =
      Eigen::Map<const Eigen::VectorXd>(coefficients.data(), degree + 1);
  if (!(polynomial / polynomial[degree]).allFinite()) return {};

  const Eigen::PolynomialSolver<double, Eigen::Dynamic> solver(polynomial);
  std::vector<double> real;
  for (const std::complex<double>& root : solver.roots()) {
    if (!std::isfinite(root.real()) || !std::isfinite(root.imag())) return {};
    if (std::abs(root.imag()) < largest_imaginary_part) real.push_back(root.real());
  }
  return real;
}

}  // namespace ocpan

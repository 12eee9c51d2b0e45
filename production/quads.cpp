#include "production/quads.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <set>

#include <Eigen/Core>

#include "production/corner_grid.h"

namespace ocpan {
namespace {

constexpr double side_tolerance = 0.3;            // of the sum of two opposite sides
constexpr double most_parallel_squared = 0.5625;  // cosine 0.75 between the diagonals

// The area of a closed path by the trapezoid rule, twice, positive if it runs
// counterclockwise as seen in the picture.
double signed_area(const std::array<Eigen::Vector2d, 4>& path) {
  double sum = 0;
  for (std::size_t k = 0; k < path.size(); ++k) {
    const Eigen::Vector2d& a = path[k];
    const Eigen::Vector2d& b = path[(k + 1) % path.size()];
    sum += (a.y() + b.y()) * (b.x() - a.x());
  }
  return sum;
}

bool sides_agree(double side, double opposite) {
  return std::abs(side - opposite) <= side_tolerance * (side + opposite);
}

bool diagonals_cross(const Eigen::Vector2d& u, const Eigen::Vector2d& w) {
  const double product = u.dot(w);
  return product * product <= most_parallel_squared * u.squaredNorm() * w.squaredNorm();
}

// The quad that spans from a corner along a and b, if there is one. The directions are
// those of the first corner all the way.
std::optional<prod_quad> quad_from(std::int32_t i, const Eigen::Vector2d& a,
                                   const Eigen::Vector2d& b,
                                   const std::vector<Eigen::Vector2d>& positions,
                                   const corner_grid& grid) {
  const auto at = [&](std::int32_t corner) { return positions[static_cast<std::size_t>(corner)]; };
  std::array<std::int32_t, 3> excluded = {i, -1, -1};
  const auto [n1, d1] = grid.nearest_along(at(i), a, excluded);
  if (n1 < 0) return std::nullopt;
  excluded[1] = n1;
  const auto [n2, d2] = grid.nearest_along(at(i), b, excluded);
  if (n2 < 0) return std::nullopt;
  excluded[2] = n2;
  const auto [n3, d3] = grid.nearest_along(at(n2), a, excluded);
  if (n3 < 0) return std::nullopt;
  const auto [closing, d4] = grid.nearest_along(at(n1), b, excluded);
  if (closing != n3) return std::nullopt;
  if (!sides_agree(d1, d3) || !sides_agree(d2, d4)) return std::nullopt;
  if (!diagonals_cross(at(i) - at(n3), at(n1) - at(n2))) return std::nullopt;

  prod_quad quad = {i, n2, n3, n1};
  if (signed_area({at(i), at(n2), at(n3), at(n1)}) >= 0) quad = {i, n1, n3, n2};
  std::rotate(quad.begin(), std::min_element(quad.begin(), quad.end()), quad.end());
  return quad;
}

}  // namespace

std::vector<prod_quad> build_quads(const std::vector<prod_corner>& corners) {
  const corner_grid grid(corners);
  std::vector<Eigen::Vector2d> positions;
  for (const prod_corner& corner : corners) positions.emplace_back(corner.x, corner.y);

  std::vector<prod_quad> quads;
  std::set<prod_quad> known;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const Eigen::Vector2d e1(corners[i].e1_x, corners[i].e1_y);
    const Eigen::Vector2d e2(corners[i].e2_x, corners[i].e2_y);
    for (int k = 0; k < 4; ++k) {
      const Eigen::Vector2d a = k % 2 == 1 ? Eigen::Vector2d(-e1) : e1;
      const Eigen::Vector2d b = k >= 2 ? Eigen::Vector2d(-e2) : e2;
      const auto quad = quad_from(static_cast<std::int32_t>(i), a, b, positions, grid);
      if (quad && known.insert(*quad).second) quads.push_back(*quad);
    }
  }
  return quads;
}

}  // namespace ocpan

#include "tables/sphere_polygon.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Geometry>

namespace ocpan {

std::vector<Eigen::Vector2d> remove_repeats(const std::vector<Eigen::Vector2d>& hull) {
  std::vector<Eigen::Vector2d> kept = hull;
  kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
  return kept;
}

Eigen::MatrixX2d subdivide_to_128(std::vector<Eigen::Vector2d> hull) {
  while (hull.size() < polygon_vertices) {
    // The edge that ends in vertex i; the closing one, which ends in vertex 0, stands for
    // the end of the list.
    std::size_t end = hull.size();
    double longest = (hull.front() - hull.back()).squaredNorm();
    for (std::size_t i = 1; i < hull.size(); ++i) {
      const double squared_length = (hull[i] - hull[i - 1]).squaredNorm();
      if (squared_length > longest) {
        longest = squared_length;
        end = i;
      }
    }
    const Eigen::Vector2d middle = (hull[end - 1] + hull[end % hull.size()]) * 0.5;
    hull.insert(hull.begin() + static_cast<std::ptrdiff_t>(end), middle);
  }
  Eigen::MatrixX2d polygon(polygon_vertices, 2);
  for (int i = 0; i < polygon_vertices; ++i) {
    polygon.row(i) = hull[static_cast<std::size_t>(i)].transpose();
  }
  return polygon;
}

Eigen::MatrixX3d expand_on_sphere(const Eigen::MatrixX3d& directions) {
  constexpr double outward = 0.0625;
  const Eigen::Index count = directions.rows();
  Eigen::MatrixX3d expanded(count, 3);
  for (Eigen::Index i = 0; i < count; ++i) {
    const Eigen::Vector3d p = directions.row(i);
    const Eigen::Vector3d before = directions.row((i + count - 1) % count);
    const Eigen::Vector3d after = directions.row((i + 1) % count);
    const Eigen::Vector3d along = before - after;
    const Eigen::Vector3d tangent = along / along.norm();
    const Eigen::Vector3d normal = p.cross(tangent);
    const Eigen::Vector3d moved = p + outward * (normal / normal.norm());
    expanded.row(i) = moved / moved.norm();
  }
  return expanded;
}

std::int32_t to_q24(double component) {
  constexpr double one = 16777216.0;
  constexpr double most = std::numeric_limits<std::int32_t>::max();
  if (std::isnan(component)) return 0;
  const double scaled = component > 0 ? component * one + 0.5 : component * one - 0.5;
  return static_cast<std::int32_t>(std::clamp(scaled, -most, most));
}

}  // namespace ocpan

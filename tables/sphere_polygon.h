#pragma once

#include <cstdint>
#include <vector>

#include <Eigen/Core>

namespace ocpan {

inline constexpr int polygon_vertices = 128;

// Drops each vertex that is the one before it again. The last and the first aren't compared.
std::vector<Eigen::Vector2d> remove_repeats(const std::vector<Eigen::Vector2d>& hull);

// Halves the longest edge until the polygon has 128 vertices. Of edges alike the closing one
// is halved first, then the earliest; the closing edge's midpoint becomes the last vertex.
//
//   hull   1 to 128 vertices
Eigen::MatrixX2d subdivide_to_128(std::vector<Eigen::Vector2d> hull);

// Moves the vertices of a closed polygon on the unit sphere outward by 0.0625, measured
// along the tangent that stands square on the line between a vertex's neighbours, and back
// onto the sphere.
//
//   directions   N x 3, unit rows, in the turning sense that convex_outline gives
Eigen::MatrixX3d expand_on_sphere(const Eigen::MatrixX3d& directions);

// A direction's component with 24 fractional bits, rounded half away from zero; 0 for
// not-a-number.
std::int32_t to_q24(double component);

}  // namespace ocpan

#include "production/quad_matching.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include <Eigen/Geometry>

namespace ocpan {
namespace {

constexpr double match_limit = 1.2;         // sides
constexpr std::size_t neighbour_pairs = 2;  // corner pairs that make cameras neighbours

// What a quad of the second camera contributes.
struct quad_edges {
  std::array<Eigen::Vector3d, 4> normals;  // of the plane through the origin and edge k, k + 1
  std::array<double, 4> angles;            // of side k seen from the origin, radians
};

// What a quad of the first camera contributes: where its corners lie, unit vectors.
using quad_directions = std::array<Eigen::Vector3d, 4>;

// Divides by the length without a guard: a point's degenerate quad is to match nothing.
Eigen::Vector3d unit(const Eigen::Vector3d& v) { return v / v.norm(); }

quad_edges edges_of(const prod_quad& quad, const sphere_points& points) {
  quad_edges edges;
  for (std::size_t k = 0; k < 4; ++k) {
    const Eigen::Vector3d from = points.col(quad[k]);
    const Eigen::Vector3d to = points.col(quad[(k + 1) % 4]);
    edges.normals[k] = unit(from.cross(to));
    edges.angles[k] = std::acos(from.dot(to) / (from.norm() * to.norm()));
  }
  return edges;
}

quad_directions directions_of(const prod_quad& quad, const sphere_points& points) {
  quad_directions directions;
  for (std::size_t k = 0; k < 4; ++k) directions[k] = unit(points.col(quad[k]));
  return directions;
}

// Whether every rotation fails by a bound that takes no arc cosine: pi / 2 - acos(x) is at
// least x for a positive x and at least pi / 2 x for a negative one. Says no in doubt.
bool certainly_apart(const quad_directions& corners, const quad_edges& edges) {
  constexpr double safe_limit = match_limit + 1e-6;
  std::array<std::array<double, 4>, 4> outside;  // [edge][corner], a lower bound
  for (std::size_t m = 0; m < 4; ++m) {
    const double per_side = 1 / edges.angles[m];
    for (std::size_t k = 0; k < 4; ++k) {
      const double x = edges.normals[m].dot(corners[k]);
      outside[m][k] = (x < 0 ? 1.5707963267948968 * x : x) * per_side;
    }
  }
  for (std::size_t r = 0; r < 4; ++r) {
    bool fails = false;
    for (std::size_t k = 0; k < 4; ++k) {
      fails |= outside[(r + k + 3) % 4][k] + outside[(r + k) % 4][k] > safe_limit;
    }
    if (!fails) return false;
  }
  return true;
}

struct rotation_distance {
  std::size_t rotation;
  double distance;
};

rotation_distance best_rotation(const quad_directions& corners, const quad_edges& edges) {
  std::array<std::array<double, 4>, 4> outside;  // [edge][corner], in sides
  for (std::size_t m = 0; m < 4; ++m) {
    for (std::size_t k = 0; k < 4; ++k) {
      outside[m][k] = (pi / 2 - std::acos(edges.normals[m].dot(corners[k]))) / edges.angles[m];
    }
  }
  rotation_distance best{0, std::numeric_limits<double>::quiet_NaN()};
  for (std::size_t r = 0; r < 4; ++r) {
    double worst = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      const double e = outside[(r + k + 3) % 4][k] + outside[(r + k) % 4][k];
      if (std::isnan(e) || e > worst) worst = e;  // once not a number, it stays so
    }
    if (worst < best.distance || (std::isnan(best.distance) && !std::isnan(worst))) {
      best = {r, worst};
    }
  }
  return best;
}

prod_quad rotated(const prod_quad& quad, std::size_t first) {
  return {quad[first], quad[(first + 1) % 4], quad[(first + 2) % 4], quad[(first + 3) % 4]};
}

}  // namespace

double quad_scale(const std::vector<quad_lists>& quads, const std::vector<sphere_points>& points) {
  std::vector<double> squares;
  const auto add_edges = [&](const std::vector<prod_quad>& list, const sphere_points& of_camera) {
    for (const prod_quad& quad : list) {
      for (std::size_t k = 0; k < 4; ++k) {
        const double square =
            (of_camera.col(quad[k]) - of_camera.col(quad[(k + 1) % 4])).squaredNorm();
        if (!std::isnan(square)) squares.push_back(square);
      }
    }
  };
  for (std::size_t c = 0; c < quads.size(); ++c) {
    add_edges(quads[c].black, points[c]);
    add_edges(quads[c].white, points[c]);
  }
  if (squares.empty()) return std::numeric_limits<double>::quiet_NaN();
  const auto middle = squares.begin() + static_cast<std::ptrdiff_t>(squares.size() / 2);
  std::nth_element(squares.begin(), middle, squares.end());
  if (squares.size() % 2 == 1) return std::sqrt(*middle);
  return std::sqrt((*std::max_element(squares.begin(), middle) + *middle) / 2);
}

quad_comparison quad_distance(const prod_quad& first, const prod_quad& second,
                              const sphere_points& first_points,
                              const sphere_points& second_points) {
  const rotation_distance best =
      best_rotation(directions_of(first, first_points), edges_of(second, second_points));
  return {rotated(second, best.rotation), best.distance};
}

std::vector<quad_match> match_quads(const std::vector<prod_quad>& first,
                                    const std::vector<prod_quad>& second,
                                    const sphere_points& first_points,
                                    const sphere_points& second_points) {
  std::vector<quad_edges> edges;
  edges.reserve(second.size());
  for (const prod_quad& quad : second) edges.push_back(edges_of(quad, second_points));

  std::vector<quad_match> matches;
  for (const prod_quad& quad : first) {
    const quad_directions corners = directions_of(quad, first_points);
    for (std::size_t s = 0; s < second.size(); ++s) {
      if (certainly_apart(corners, edges[s])) continue;
      const rotation_distance best = best_rotation(corners, edges[s]);
      if (best.distance < match_limit) matches.push_back({quad, rotated(second[s], best.rotation)});
    }
  }
  return matches;
}

corner_index_lists corner_pairs(const std::vector<quad_match>& matches) {
  std::set<std::pair<std::int32_t, std::int32_t>> known;
  corner_index_lists lists;
  for (const quad_match& match : matches) {
    for (std::size_t k = 0; k < 4; ++k) {
      if (!known.emplace(match.first[k], match.second[k]).second) continue;
      lists.first.push_back(match.first[k]);
      lists.second.push_back(match.second[k]);
    }
  }
  return lists;
}

sphere_points select_points(const sphere_points& points, const std::vector<std::int32_t>& corners) {
  sphere_points selected(3, static_cast<Eigen::Index>(corners.size()));
  for (std::size_t k = 0; k < corners.size(); ++k) {
    selected.col(static_cast<Eigen::Index>(k)) = points.col(corners[k]);
  }
  return selected;
}

camera_graph build_camera_graph(const pair_map<corner_index_lists>& corner_indices) {
  camera_graph graph;
  for (const auto& [pair, corners] : corner_indices) {
    if (corners.first.size() < neighbour_pairs) continue;
    graph[pair.first].insert(pair.second);
    graph[pair.second].insert(pair.first);
  }
  return graph;
}

corner_index_lists match_nearest(const sphere_points& first, const sphere_points& second,
                                 double radius) {
  struct candidate {
    double square;
    std::int32_t first;
    std::int32_t second;
  };
  std::vector<candidate> candidates;
  for (Eigen::Index b = 0; b < second.cols(); ++b) {
    candidate nearest{std::numeric_limits<double>::infinity(), -1, static_cast<std::int32_t>(b)};
    for (Eigen::Index a = 0; a < first.cols(); ++a) {
      const double square = (first.col(a) - second.col(b)).squaredNorm();
      if (square < nearest.square) {
        nearest.square = square;
        nearest.first = static_cast<std::int32_t>(a);
      }
    }
    if (nearest.square < radius * radius) candidates.push_back(nearest);
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const candidate& x, const candidate& y) { return x.square < y.square; });
  corner_index_lists lists;
  for (const candidate& match : candidates) {
    lists.first.push_back(match.first);
    lists.second.push_back(match.second);
  }
  return lists;
}

}  // namespace ocpan

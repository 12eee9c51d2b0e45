#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include <Eigen/Core>

#include "model/pose.h"
#include "production/rotation_hypothesis.h"

namespace ocpan::testing {

// A rig at the middle of a sphere of radius 1000 with bent sheets of cells, each seen by
// two cameras. Camera c stands turned by truth[c]: its points are those of the sphere
// turned back, so that the search is to find the truth. All matches are true ones.
struct search_scene {
  std::vector<Eigen::Matrix3d> truth;
  std::vector<sphere_points> points;
  std::vector<camera_pair> pairs;
  pair_map<std::vector<quad_match>> matches;
  pair_map<corner_index_lists> corners;
  pair_map<point_lists> pair_points;
  camera_graph graph;
  double scale = 0;

  // After a change of the matches.
  void renew() {
    for (const camera_pair& pair : pairs) {
      corners[pair] = corner_pairs(matches[pair]);
      pair_points[pair] = {select_points(points[pair.first], corners[pair].first),
                           select_points(points[pair.second], corners[pair].second)};
    }
    graph = build_camera_graph(corners);
  }

  search_inputs inputs() const {
    search_inputs shared;
    shared.camera_count = points.size();
    shared.graph = &graph;
    shared.pairs = &pairs;
    shared.corner_indices = &corners;
    shared.points = &points;
    shared.scale = scale;
    shared.quad_matches = &matches;
    shared.pair_points = &pair_points;
    return shared;
  }
};

//   turns   per camera, rotation vectors in radians; the first is to be zero
//   links   the pairs that see a common sheet, ascending
inline search_scene make_search_scene(const std::vector<Eigen::Vector3d>& turns,
                                      const std::vector<camera_pair>& links) {
  constexpr int columns = 4, rows = 3;
  constexpr double cell = 0.06;
  search_scene scene;
  scene.scale = 1000 * cell;
  for (const Eigen::Vector3d& turn : turns) scene.truth.push_back(rotation_from_vector(turn));
  std::vector<std::vector<Eigen::Vector3d>> lists(turns.size());
  for (std::size_t link = 0; link < links.size(); ++link) {
    const auto [first, second] = links[link];
    scene.pairs.push_back(links[link]);
    const int a = static_cast<int>(lists[first].size());
    const int b = static_cast<int>(lists[second].size());
    for (int c = 0; c < columns; ++c) {
      for (int r = 0; r < rows; ++r) {
        const double azimuth = static_cast<double>(link) + c * cell + 0.003 * r * r;
        const double elevation = (r - 1) * cell + 0.004 * c;
        const Eigen::Vector3d point =
            1000 * Eigen::Vector3d(std::cos(elevation) * std::cos(azimuth),
                                   std::cos(elevation) * std::sin(azimuth), std::sin(elevation));
        lists[first].push_back(scene.truth[first].transpose() * point);
        lists[second].push_back(scene.truth[second].transpose() * point);
        if (c + 1 == columns || r + 1 == rows) continue;
        const auto quad = [k = c * rows + r](int from) {
          return prod_quad{from + k, from + k + rows, from + k + rows + 1, from + k + 1};
        };
        scene.matches[links[link]].push_back({quad(a), quad(b)});
      }
    }
  }
  for (const auto& list : lists) {
    sphere_points points(3, static_cast<Eigen::Index>(list.size()));
    for (std::size_t k = 0; k < list.size(); ++k)
      points.col(static_cast<Eigen::Index>(k)) = list[k];
    scene.points.push_back(points);
  }
  scene.renew();
  return scene;
}

}  // namespace ocpan::testing

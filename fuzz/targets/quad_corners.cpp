#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/promise.h"
#include "fuzz/quad_promises.h"
#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "production/corner_grid.h"
#include "production/production_codes.h"
#include "production/quad_matching.h"
#include "production/rotation_search.h"
#include "production/sphere_maps.h"

// The input describes the corners that two or three cameras saw, and how the cameras stand.
// They are joined to quads, matched, and the rotations searched.

namespace ocpan::fuzz {
namespace {

constexpr int picture_side = 640;    // pixels
constexpr int most_corners = 60;     // of a camera
constexpr std::uint32_t trials = 5;  // of the search

// Corners of a grid that bytes move about, or at any place.
std::vector<prod_corner> corners_of(byte_source& source) {
  const int count = source.below(most_corners);
  const int columns = 1 + source.below(10);
  const double pitch = source.byte();
  const bool free = source.byte() % 4 == 0;
  const double turn = source.byte() * pi / 128;
  std::vector<prod_corner> corners;
  for (int k = 0; k < count; ++k) {
    const int row = k / columns;
    prod_corner corner;
    const double first = turn + (source.byte() - 128) / 512.0;
    const double second = first + pi / 2 + (source.byte() - 128) / 256.0;
    corner.e1_x = std::cos(first);
    corner.e1_y = std::sin(first);
    corner.e2_x = std::cos(second);
    corner.e2_y = std::sin(second);
    const double x = free ? source.two_bytes() : pitch * (k % columns) + source.byte() / 64.0;
    const double y = free ? source.two_bytes() : pitch * row + source.byte() / 64.0;
    corner.x = std::clamp(x * std::cos(turn) - y * std::sin(turn) + 320, 0.0, picture_side - 0.01);
    corner.y = std::clamp(x * std::sin(turn) + y * std::cos(turn) + 320, 0.0, picture_side - 0.01);
    corners.push_back(corner);
  }
  return corners;
}

model_map model_of(byte_source& source) {
  model_map model =
      initial_model({picture_side, picture_side, 60.0F + source.byte() % 140, source.below(3)});
  const auto angle = [&] { return (source.byte() - 128) / 128.0; };
  const double x = angle(), y = 3 * angle(), z = angle();
  model = rotate_model(model, rotation_from_vector({x, y, z}));
  model[rho_1] = angle() / 4;
  model[C_2] = 200 * angle();
  return model;
}

// The plain way that the grid is faster than.
nearest_corner plain_nearest(const std::vector<prod_corner>& corners, const Eigen::Vector2d& from,
                             const Eigen::Vector2d& direction, std::int32_t excluded) {
  nearest_corner best{-1, std::numeric_limits<double>::max()};
  for (std::int32_t i = 0; i < std::ssize(corners); ++i) {
    const prod_corner& corner = corners[static_cast<std::size_t>(i)];
    const Eigen::Vector2d offset = Eigen::Vector2d(corner.x, corner.y) - from;
    const double ahead = offset.dot(direction);
    if (i == excluded || ahead < 0) continue;
    const double cost = ahead + 5.0 * (offset - ahead * direction).norm();
    if (cost < best.cost) best = {i, cost};
  }
  return best;
}

void must_find_nearest(const std::vector<prod_corner>& corners) {
  const corner_grid grid(corners);
  for (std::int32_t i = 0; i < std::ssize(corners); ++i) {
    const prod_corner& corner = corners[static_cast<std::size_t>(i)];
    const Eigen::Vector2d from(corner.x, corner.y), direction(corner.e1_x, corner.e1_y);
    const std::int32_t excluded[] = {i};
    const nearest_corner found = grid.nearest_along(from, direction, excluded);
    const nearest_corner wanted = plain_nearest(corners, from, direction, i);
    must_hold(found.index == wanted.index && found.cost == wanted.cost, "the nearest is found");
  }
}

// What is seen by the cameras of one input.
struct fixture_scene {
  std::vector<std::vector<prod_quad>> quads;
  std::vector<sphere_points> points;
};

void add_camera(fixture_scene& scene, byte_source& source) {
  constexpr double radius_mm = 1000;
  const model_map model = model_of(source);
  const std::vector<prod_corner> corners = corners_of(source);
  must_find_nearest(corners);
  scene.quads.push_back(must_build_quads(corners));
  Eigen::Matrix2Xd pixels(2, std::ssize(corners));
  for (Eigen::Index k = 0; k < pixels.cols(); ++k) {
    const prod_corner& corner = corners[static_cast<std::size_t>(k)];
    pixels.col(k) << corner.x, corner.y;
  }
  const sphere_grid grid = build_sphere_grid(model, picture_side, picture_side, radius_mm);
  scene.points.push_back(features_to_sphere(model, pixels, grid, radius_mm));
  for (Eigen::Index k = 0; k < pixels.cols(); ++k) {
    const double length = scene.points.back().col(k).norm();
    must_hold(std::isnan(length) || std::abs(length - radius_mm) < 1e-6, "points on the sphere");
  }
}

std::vector<quad_match> must_match(const fixture_scene& scene, const camera_pair& pair) {
  const std::vector<prod_quad>& first = scene.quads[pair.first];
  const std::vector<prod_quad>& second = scene.quads[pair.second];
  const sphere_points& first_points = scene.points[pair.first];
  const sphere_points& second_points = scene.points[pair.second];
  auto matches = match_quads(first, second, first_points, second_points);
  std::size_t next = 0;
  for (const prod_quad& quad : first) {
    for (const prod_quad& other : second) {
      const quad_comparison compared = quad_distance(quad, other, first_points, second_points);
      if (!(compared.distance < 1.2)) continue;
      must_hold(next < matches.size() && matches[next].first == quad &&
                    matches[next].second == compared.second,
                "near quads match");
      ++next;
    }
  }
  must_hold(next == matches.size(), "only near quads match");
  return matches;
}

void must_search(const fixture_scene& scene, std::uint32_t seed) {
  std::vector<camera_pair> pairs;
  pair_map<std::vector<quad_match>> matches;
  pair_map<corner_index_lists> corners;
  pair_map<point_lists> points;
  std::vector<quad_lists> lists;
  for (const auto& quads : scene.quads) lists.push_back({quads, {}});
  for (std::uint64_t i = 0; i < scene.points.size(); ++i) {
    for (std::uint64_t j = i + 1; j < scene.points.size(); ++j) {
      const camera_pair& pair = pairs.emplace_back(camera_pair{i, j});
      matches[pair] = must_match(scene, pair);
      corners[pair] = corner_pairs(matches[pair]);
      points[pair] = {select_points(scene.points[i], corners[pair].first),
                      select_points(scene.points[j], corners[pair].second)};
      static_cast<void>(match_nearest(scene.points[i], scene.points[j], 50));
    }
  }
  const camera_graph graph = build_camera_graph(corners);
  const search_inputs inputs{scene.points.size(),
                             &graph,
                             &pairs,
                             &corners,
                             &scene.points,
                             quad_scale(lists, scene.points),
                             &matches,
                             &points};
  t_data worker;
  worker.generator.seed(seed);
  worker.inputs = &inputs;
  worker.trials = trials;
  search_worker(&worker);
  must_hold(worker.error == 0 || worker.error == fixture_unusable, "a known result");
  for (const Eigen::Matrix3d& rotation : worker.best_rotations) {
    must_hold(rotation.hasNaN() || (rotation * rotation.transpose()).isIdentity(1e-9),
              "a rotation is one");
  }
}

}  // namespace

void run_quad_corners(input bytes) {
  byte_source source(bytes);
  const int cameras = 2 + source.below(2);
  const std::uint32_t seed = source.byte();
  fixture_scene scene;
  for (int camera = 0; camera < cameras; ++camera) add_camera(scene, source);
  must_search(scene, seed);
}

}  // namespace ocpan::fuzz

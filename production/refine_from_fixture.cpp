#include "production/refine_from_fixture.h"

#include "model/rigid_rotation.h"
#include "platform/processors.h"
#include "production/corner_detection.h"
#include "production/corner_refinement.h"
#include "production/debug_pictures.h"
#include "production/production_codes.h"
#include "production/production_report.h"
#include "production/quad_colours.h"
#include "production/quads.h"
#include "production/rotation_search.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

// What was seen, per camera.
struct fixture_features {
  std::vector<std::vector<prod_corner>> corners;
  std::vector<quad_lists> quads;
};

// What two cameras may have in common before their rotations are known, per pair.
struct first_pass_matches {
  pair_map<std::vector<quad_match>> quads;
  pair_map<corner_index_lists> corners;
  pair_map<point_lists> points;
};

fixture_features find_features(const std::vector<cv::Mat>& pictures) {
  fixture_features found;
  corner_scratch scratch;
  for (const cv::Mat& picture : pictures) {
    std::vector<prod_corner> corners =
        refine_corners(picture, detect_corner_candidates(picture, scratch));
    const std::vector<prod_quad> quads = build_quads(corners);
    found.quads.push_back(classify_quads(quads, quad_intensity_stats(picture, quads, corners)));
    found.corners.push_back(std::move(corners));
  }
  return found;
}

Eigen::Matrix2Xd pixels_of(const std::vector<prod_corner>& corners) {
  Eigen::Matrix2Xd pixels(2, static_cast<Eigen::Index>(corners.size()));
  Eigen::Index k = 0;
  for (const prod_corner& corner : corners) pixels.col(k++) << corner.x, corner.y;
  return pixels;
}

std::vector<sphere_grid> sphere_grids(const std::vector<cv::Mat>& pictures, const rig& models,
                                      double radius_mm) {
  std::vector<sphere_grid> grids;
  for (std::size_t c = 0; c < pictures.size(); ++c) {
    grids.push_back(build_sphere_grid(models[c], pictures[c].cols, pictures[c].rows, radius_mm));
  }
  return grids;
}

// The sphere points of all corners. Stops at the first camera without a corner, so that
// the list is shorter than the rig then.
std::vector<sphere_points> carry_to_sphere(const fixture_features& features,
                                           const std::vector<sphere_grid>& grids, const rig& models,
                                           double radius_mm) {
  std::vector<sphere_points> points;
  for (std::size_t c = 0; c < grids.size() && !features.corners[c].empty(); ++c) {
    points.push_back(
        features_to_sphere(models[c], pixels_of(features.corners[c]), grids[c], radius_mm));
  }
  return points;
}

// Black meets black and white meets white.
first_pass_matches match_first_pass(const std::vector<camera_pair>& pairs,
                                    const fixture_features& features,
                                    const std::vector<sphere_points>& points) {
  first_pass_matches found;
  for (const camera_pair& pair : pairs) {
    const auto& [first, second] = pair;
    const quad_lists& quads = features.quads[first];
    const quad_lists& others = features.quads[second];
    auto& matches = found.quads[pair];
    matches = match_quads(quads.black, others.black, points[first], points[second]);
    const auto white = match_quads(quads.white, others.white, points[first], points[second]);
    matches.insert(matches.end(), white.begin(), white.end());
    const corner_index_lists& corners = found.corners[pair] = corner_pairs(matches);
    found.points[pair] = {select_points(points[first], corners.first),
                          select_points(points[second], corners.second)};
  }
  return found;
}

int search(std::vector<Eigen::Matrix3d>& rotations, const std::vector<camera_pair>& pairs,
           const first_pass_matches& matches, const std::vector<sphere_points>& points,
           double scale) {
  const camera_graph graph = build_camera_graph(matches.corners);
  search_inputs inputs;
  inputs.camera_count = points.size();
  inputs.graph = &graph;
  inputs.pairs = &pairs;
  inputs.corner_indices = &matches.corners;
  inputs.points = &points;
  inputs.scale = scale;
  inputs.quad_matches = &matches.quads;
  inputs.pair_points = &matches.points;
  return rotation_search(rotations, inputs, search_worker_count(processor_count()));
}

pair_map<corner_index_lists> match_second_pass(const std::vector<camera_pair>& pairs,
                                               const std::vector<sphere_points>& points,
                                               double scale) {
  pair_map<corner_index_lists> matches;
  for (const camera_pair& pair : pairs) {
    matches[pair] = match_nearest(points[pair.first], points[pair.second], 0.5 * scale);
  }
  return matches;
}

void write_all_matches(const char* prefix, const pair_map<corner_index_lists>& matches,
                       const std::vector<cv::Mat>& pictures, const fixture_features& features) {
  for (const auto& [pair, corners] : matches) {
    write_match_pictures(prefix, pair, corners, pictures, features.corners);
  }
}

}  // namespace

int refine_from_fixture(prod_measures& measures, rig& refined_models,
                        const std::vector<cv::Mat>& pictures, const rig& models,
                        const std::vector<camera_pair>& pairs, double radius_mm,
                        const refinement_tolerances& tolerances) {
  const std::size_t cameras = pictures.size();
  const std::vector<sphere_grid> grids = sphere_grids(pictures, models, radius_mm);
  const fixture_features features = find_features(pictures);
  for (std::size_t c = 0; c < cameras; ++c) {
    write_corner_picture(pictures[c], features.corners[c], c);
  }
  const auto points = carry_to_sphere(features, grids, models, radius_mm);
  if (points.size() < cameras) return fixture_unusable;
  for (std::size_t c = 0; c < cameras; ++c) {
    write_quad_pictures(pictures[c], features.corners[c], features.quads[c], c);
  }

  const double scale = quad_scale(features.quads, points);
  const first_pass_matches first_pass = match_first_pass(pairs, features, points);
  write_all_matches("2.naive_matches_", first_pass.corners, pictures, features);
  std::vector<Eigen::Matrix3d> rotations;
  const int searched = search(rotations, pairs, first_pass, points, scale);
  if (searched != code::success) return searched;

  std::vector<sphere_points> turned_points;
  rig turned_models;
  for (std::size_t c = 0; c < cameras; ++c) {
    turned_points.emplace_back(rotations[c] * points[c]);
    turned_models.push_back(rotate_model(models[c], rotations[c]));
  }
  const auto second_pass = match_second_pass(pairs, turned_points, scale);
  write_all_matches("3.matches_", second_pass, pictures, features);

  std::vector<pair_measurement> measurements =
      build_pair_measurements(pairs, second_pass, features.corners, turned_points, radius_mm);
  refine_rig(refined_models, measurements, turned_models, measurements, radius_mm, tolerances);

  measure_reprojection(measures, refined_models, measurements);
  const auto refined_grids = sphere_grids(pictures, refined_models, radius_mm);
  measure_deltas(measures, points,
                 carry_to_sphere(features, refined_grids, refined_models, radius_mm), scale);
  return code::success;
}

}  // namespace ocpan

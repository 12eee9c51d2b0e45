// The stages of a production run after the corners: four pictures of 1920 by 1080 with
// about a thousand corners each, cameras in a ring, turned by 0.8 cells.

#include <benchmark/benchmark.h>

#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "production/corner_detection.h"
#include "production/corner_refinement.h"
#include "production/fixture_refinement.h"
#include "production/quad_colours.h"
#include "production/quad_matching.h"
#include "production/quads.h"
#include "production/rotation_search.h"
#include "production/sphere_maps.h"
#include "simulator/fixture.h"
#include "simulator/fixture_run.h"

using namespace ocpan;

namespace {

constexpr std::size_t cameras = 4;

rig_description ring() {
  const camera_details details{1920, 1080, 140, 1};
  rig_description description;
  for (std::size_t c = 0; c < cameras; ++c) {
    model_map model = initial_model(details);
    model[H_2] += 2.3;
    model[V_2] -= 1.6;
    model[O_th] -= 0.005;
    model[C_2] = -30;
    const double yaw = pi / 2 * static_cast<double>(c);
    description.cameras.push_back(
        {details, rotate_model(model, rotation_from_vector({0, yaw, 0}))});
  }
  return description;
}

// What the stages pass on to one another, each made once.
struct line_job {
  rig models;
  std::vector<std::vector<prod_corner>> corners;
  std::vector<Eigen::Matrix2Xd> pixels;
  std::vector<quad_lists> quads;
  std::vector<sphere_points> points;
  std::vector<camera_pair> pairs{{0, 1}, {0, 3}, {1, 2}, {2, 3}};
  pair_map<std::vector<quad_match>> matches;
  pair_map<corner_index_lists> corner_indices;
  pair_map<point_lists> pair_points;
  camera_graph graph;
  double scale = 0;
  std::vector<Eigen::Matrix3d> rotations;
  rig turned_models;
  std::vector<sphere_points> turned_points;
  std::vector<pair_measurement> measurements;

  line_job() {
    const rig_description description = ring();
    fixture_description fixture = suitable_fixture(description);
    fixture.cell_degrees = 2.5;
    models =
        disturbed_models(models_of(description), {0.8 * fixture.cell_degrees, 0.05, 0.0005, 1});
    corner_scratch scratch;
    for (std::size_t c = 0; c < cameras; ++c) {
      const cv::Mat picture = render_fixture(description.cameras[c], fixture, c);
      corners.push_back(refine_corners(picture, detect_corner_candidates(picture, scratch)));
      const auto found = build_quads(corners[c]);
      quads.push_back(classify_quads(found, quad_intensity_stats(picture, found, corners[c])));
      pixels.emplace_back(2, static_cast<Eigen::Index>(corners[c].size()));
      Eigen::Index k = 0;
      for (const prod_corner& corner : corners[c]) pixels[c].col(k++) << corner.x, corner.y;
      points.push_back(features_to_sphere(models[c], pixels[c], grid_of(c), 1000));
    }
    scale = quad_scale(quads, points);
    for (const camera_pair& pair : pairs) {
      matches[pair] = match(pair);
      corner_indices[pair] = corner_pairs(matches[pair]);
      pair_points[pair] = {select_points(points[pair.first], corner_indices[pair].first),
                           select_points(points[pair.second], corner_indices[pair].second)};
    }
    graph = build_camera_graph(corner_indices);
    static_cast<void>(rotation_search(rotations, inputs(), 1));
    pair_map<corner_index_lists> nearest;
    for (std::size_t c = 0; c < cameras; ++c) {
      turned_models.push_back(rotate_model(models[c], rotations[c]));
      turned_points.emplace_back(rotations[c] * points[c]);
    }
    for (const camera_pair& pair : pairs) {
      nearest[pair] =
          match_nearest(turned_points[pair.first], turned_points[pair.second], 0.5 * scale);
    }
    measurements = build_pair_measurements(pairs, nearest, corners, turned_points, 1000);
  }

  sphere_grid grid_of(std::size_t camera) const {
    return build_sphere_grid(models[camera], 1920, 1080, 1000);
  }
  std::vector<quad_match> match(const camera_pair& pair) const {
    const auto& [i, j] = pair;
    auto found = match_quads(quads[i].black, quads[j].black, points[i], points[j]);
    const auto white = match_quads(quads[i].white, quads[j].white, points[i], points[j]);
    found.insert(found.end(), white.begin(), white.end());
    return found;
  }
  search_inputs inputs() const {
    search_inputs shared;
    shared.camera_count = cameras;
    shared.graph = &graph;
    shared.pairs = &pairs;
    shared.corner_indices = &corner_indices;
    shared.points = &points;
    shared.scale = scale;
    shared.quad_matches = &matches;
    shared.pair_points = &pair_points;
    return shared;
  }
};

const line_job& job() {
  static const line_job made;
  return made;
}

void sphere_maps(benchmark::State& state) {
  const line_job& line = job();
  for (auto _ : state) {
    for (std::size_t c = 0; c < cameras; ++c) {
      benchmark::DoNotOptimize(
          features_to_sphere(line.models[c], line.pixels[c], line.grid_of(c), 1000));
    }
  }
  state.counters["corners"] = static_cast<double>(line.corners[0].size());
}
BENCHMARK(sphere_maps)->Unit(benchmark::kMillisecond);

void first_pass(benchmark::State& state) {
  const line_job& line = job();
  std::size_t matches = 0;
  for (auto _ : state) {
    matches = 0;
    for (const camera_pair& pair : line.pairs) {
      const auto found = line.match(pair);
      benchmark::DoNotOptimize(corner_pairs(found));
      matches += found.size();
    }
  }
  state.counters["matches"] = static_cast<double>(matches);
}
BENCHMARK(first_pass)->Unit(benchmark::kMillisecond);

void second_pass(benchmark::State& state) {
  const line_job& line = job();
  for (auto _ : state) {
    for (const camera_pair& pair : line.pairs) {
      benchmark::DoNotOptimize(match_nearest(line.turned_points[pair.first],
                                             line.turned_points[pair.second], 0.5 * line.scale));
    }
  }
}
BENCHMARK(second_pass)->Unit(benchmark::kMillisecond);

// All trials, shared out over as many workers as the argument says.
void search(benchmark::State& state) {
  const line_job& line = job();
  const search_inputs inputs = line.inputs();
  for (auto _ : state) {
    std::vector<Eigen::Matrix3d> rotations;
    if (rotation_search(rotations, inputs, static_cast<unsigned>(state.range(0))) != 0) {
      state.SkipWithError("the search failed");
    }
  }
  std::size_t columns = 0;
  for (const auto& [pair, points] : line.pair_points) {
    columns += static_cast<std::size_t>(points.first.cols());
  }
  state.counters["columns"] = static_cast<double>(columns);
  state.counters["trials"] =
      benchmark::Counter(search_trials, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(search)->Arg(1)->Arg(2)->Arg(4)->Arg(8)->UseRealTime()->Unit(benchmark::kMillisecond);

void refine_fixture(benchmark::State& state) {
  const line_job& line = job();
  std::size_t features = 0;
  for (const pair_measurement& measurement : line.measurements)
    features += measurement.poses.size();
  for (auto _ : state) {
    rig models;
    std::vector<pair_measurement> measurements;
    refine_rig(models, measurements, line.turned_models, line.measurements, 1000, {5.0, 20.0, 0.1});
    benchmark::DoNotOptimize(models);
  }
  state.counters["features"] = static_cast<double>(features);
}
BENCHMARK(refine_fixture)->Unit(benchmark::kMillisecond);

}  // namespace

// The cost of a lookup table against what nobody can avoid, and of the mappings against
// OpenCV's own.

#include <fstream>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "calfiles/create_cal.h"
#include "calibration/read_image.h"
#include "tables/cube_faces.h"
#include "tables/lookup_tables.h"
#include "tables/lut_format.h"
#include "tables/mask_outline.h"
#include "tables/polygons.h"
#include "tests/support/temp_folder.h"

namespace {

using namespace ocpan;

constexpr int side = 4000;  // pixels, 16 megapixels in all
constexpr int samples = cube_face_count * cube_samples * cube_samples;

// A fisheye camera of 190 degrees as a calibration file and as a project file, with the
// mask of its image circle.
struct fisheye_files {
  fisheye_files() {
    testing::write_file(folder.file("rig.txt"),
                        "Width:4000 Height:4000 Lens:1 Hfov:190\n"
                        "C_0:10 C_1:20 C_2:30 A_th:3.1 A_ph:0.2 H_0:1356 H_1:3 H_2:-2000 V_0:2 "
                        "V_1:-1356 V_2:-2000 O_th:3.1 O_ph:0.25 rho_0:0.01 rho_1:-0.02 "
                        "rho_2:0.003 L:-0.5\n");
    testing::write_file(folder.file("rig.pts"),
                        "i w4000 h4000 f3 v190 y10 p20 r30 a0.01 b-0.02 c0.01 d5 e6 g2 t1\n");
    mask = cv::Mat::zeros(side, side, CV_8UC1);
    cv::circle(mask, {side / 2, side / 2}, 1900, 255, cv::FILLED);
    cv::imwrite(folder.file("mask_0.png"), mask);
  }
  std::string calibration(bool use_file_class) const {
    return folder.file(use_file_class ? "rig.txt" : "rig.pts");
  }
  testing::temp_folder folder;
  cv::Mat mask;
};

const fisheye_files& files() {
  static const fisheye_files made;
  return made;
}

void floor_decode_mask(benchmark::State& state) {
  const std::string name = files().folder.file("mask_0.png");
  for (auto _ : state) {
    cv::Mat mask;
    benchmark::DoNotOptimize(read_image(mask, name.c_str(), 0, side, side));
  }
}
BENCHMARK(floor_decode_mask)->Unit(benchmark::kMillisecond);

void floor_distance_transform(benchmark::State& state) {
  for (auto _ : state) {
    cv::Mat distance;
    cv::distanceTransform(files().mask, distance, cv::DIST_L2, cv::DIST_MASK_PRECISE, CV_32F);
    benchmark::DoNotOptimize(distance.data);
  }
}
BENCHMARK(floor_distance_transform)->Unit(benchmark::kMillisecond);

// One pass over the decoded mask.
void floor_pass_over_mask(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(cv::countNonZero(files().mask));
}
BENCHMARK(floor_pass_over_mask)->Unit(benchmark::kMillisecond);

// The projection of all samples; 1: a calibration file, 0: a project file.
void floor_project_cube(benchmark::State& state) {
  const bool use_file_class = state.range(0) == 1;
  std::unique_ptr<cal> calibration;
  if (create_cal(calibration, files().calibration(use_file_class).c_str(), use_file_class, 5.0f)) {
    state.SkipWithError("no calibration");
  }
  const auto directions = cube_faces(253);
  for (auto _ : state) {
    std::vector<point_block> positions;
    benchmark::DoNotOptimize(calibration->cam_project(directions, 0, positions));
  }
  state.SetItemsProcessed(state.iterations() * samples);
}
BENCHMARK(floor_project_cube)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

void floor_write_table(benchmark::State& state) {
  const std::string bytes(lut_entry_count * 8, 'x');
  const std::string name = files().folder.file("floor.bin");
  for (auto _ : state) {
    std::ofstream(name, std::ios::binary).write(bytes.data(), lut_entry_count * 8);
  }
}
BENCHMARK(floor_write_table)->Unit(benchmark::kMillisecond);

// One camera from files to file; 1: a calibration file, 0: a project file.
void whole_lookup_table(benchmark::State& state) {
  const bool use_file_class = state.range(0) == 1;
  const auto& folder = files().folder;
  for (auto _ : state) {
    if (generate_lookup_tables(files().calibration(use_file_class).c_str(), folder.file("mask"),
                               folder.file("lut"), 5.0f, 253, use_file_class)) {
      state.SkipWithError("failed");
    }
  }
}
// The first of them pays for what the process keeps.
BENCHMARK(whole_lookup_table)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(1.5);

void outline_of_mask(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(coarse_hull(files().mask).data());
}
BENCHMARK(outline_of_mask)->Unit(benchmark::kMillisecond);

void whole_polygon(benchmark::State& state) {
  const auto& folder = files().folder;
  for (auto _ : state) {
    if (generate_polygons(files().calibration(true).c_str(), folder.file("mask"),
                          folder.file("poly"), 5.0f, true)) {
      state.SkipWithError("failed");
    }
  }
}
BENCHMARK(whole_polygon)->Unit(benchmark::kMillisecond);

// As many points as the cube has, all before the camera.
void opencv_fisheye_project_points(benchmark::State& state) {
  std::vector<cv::Point3d> points;
  for (int i = 0; i < samples; ++i) {
    points.emplace_back(i % 1024 / 512.0 - 1, i / 1024 / 192.0 - 1, 0.5);
  }
  const cv::Matx33d camera(1356, 0, 2000, 0, 1356, 2000, 0, 0, 1);
  const cv::Vec4d distortion(0.01, -0.02, 0.003, 0.001);
  const cv::Vec3d rotation(0.1, 0.2, 0.3), translation(0.01, 0.02, 0.03);
  for (auto _ : state) {
    std::vector<cv::Point2d> pixels;
    cv::fisheye::projectPoints(points, pixels, rotation, translation, camera, distortion);
    benchmark::DoNotOptimize(pixels.data());
  }
  state.SetItemsProcessed(state.iterations() * samples);
}
BENCHMARK(opencv_fisheye_project_points)->Unit(benchmark::kMillisecond);

// Maps of as many pixels as the cube has samples.
void opencv_init_undistort_rectify_map(benchmark::State& state) {
  const cv::Matx33d camera(1356, 0, 2000, 0, 1356, 2000, 0, 0, 1);
  const cv::Matx33d target(300, 0, 512, 0, 300, 192, 0, 0, 1);
  const cv::Vec4d distortion(0.01, -0.02, 0.003, 0.001);
  for (auto _ : state) {
    cv::Mat x, y;
    if (state.range(0) == 1) {
      cv::fisheye::initUndistortRectifyMap(camera, distortion, cv::Matx33d::eye(), target,
                                           {1024, 384}, CV_32FC1, x, y);
    } else {
      cv::initUndistortRectifyMap(camera, distortion, cv::Matx33d::eye(), target, {1024, 384},
                                  CV_32FC1, x, y);
    }
    benchmark::DoNotOptimize(x.data);
  }
  state.SetItemsProcessed(state.iterations() * samples);
}
BENCHMARK(opencv_init_undistort_rectify_map)
    ->ArgName("fisheye")
    ->Arg(1)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond);

}  // namespace

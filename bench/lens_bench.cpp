// One lens from its boards: our first solve beside OpenCV's calibrations of the same corners,
// each to its own end, with the error that is left against the true lens.

#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/calib3d.hpp>

#include "bench/simulated_boards.h"
#include "model/projection.h"
#include "model/rigid_rotation.h"
#include "solver/solve_stage.h"
#include "solver/stage_lists.h"

namespace ocpan {
namespace {

// Camera 0 of a preset with one set of its own.
simulated_boards one_camera(const char* preset, std::int64_t views) {
  return simulated_boards(preset, static_cast<int>(views), true);
}

// The pixels at which lenses are compared: a grid up to 70 degrees from the axis.
Eigen::Matrix2Xd grid_of(const camera_details& camera, const model_map& truth) {
  std::vector<Eigen::Vector2d> kept;
  const Eigen::Vector3d axis = direction_from_angles(value_of(truth, A_th), value_of(truth, A_ph));
  for (int row = 0; row < 24; ++row) {
    for (int column = 0; column < 32; ++column) {
      const Eigen::Matrix2Xd pixel =
          Eigen::Vector2d((column + 0.5) * camera.width / 32, (row + 0.5) * camera.height / 24);
      Eigen::Matrix3Xd ray;
      unproject_points(ray, pixel, truth);
      if (ray.col(0).dot(axis) > std::cos(70 * pi / 180)) kept.emplace_back(pixel.col(0));
    }
  }
  Eigen::Matrix2Xd pixels(2, static_cast<Eigen::Index>(kept.size()));
  for (Eigen::Index i = 0; i < pixels.cols(); ++i) pixels.col(i) = kept[static_cast<size_t>(i)];
  return pixels;
}

// The RMS distance in pixels between rays and the true ones, after the best turn of the whole.
double error_in_pixels(const Eigen::Matrix3Xd& rays, const Eigen::Matrix2Xd& pixels,
                       const model_map& truth) {
  Eigen::Matrix3Xd true_rays;
  unproject_points(true_rays, pixels, truth);
  const Eigen::Matrix3d turn = closest_rotation(true_rays * rays.transpose());
  Eigen::ArrayXd x, y;
  project_points(x, y, (turn * rays).colwise() + vector_of(truth, C_0), truth,
                 Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
  const double sum = (x - pixels.row(0).transpose().array()).square().sum() +
                     (y - pixels.row(1).transpose().array()).square().sum();
  return std::sqrt(sum / static_cast<double>(pixels.cols()));
}

void lens_ours(benchmark::State& state, const char* preset) {
  const simulated_boards boards = one_camera(preset, state.range(0));
  if (!boards.problem.empty()) return state.SkipWithError(boards.problem.c_str());
  const rig initial{initial_model(boards.details[0])};
  rig models;
  for (auto _ : state) {
    std::vector<view_group> groups = single_camera_groups(boards.sets, boards.frames, initial);
    run_report report;
    solve_stage(report, models, groups, initial, groups, free_for_lenses(1), free_poses(), {}, {},
                {});
  }
  const Eigen::Matrix2Xd pixels = grid_of(boards.details[0], boards.truth[0]);
  Eigen::Matrix3Xd rays;
  unproject_points(rays, pixels, models[0]);
  state.counters["error_pixels"] = error_in_pixels(rays, pixels, boards.truth[0]);
}
void lens_ours_rectilinear(benchmark::State& state) { lens_ours(state, "2-lens0"); }
void lens_ours_fisheye(benchmark::State& state) { lens_ours(state, "2-lens1"); }

void lens_opencv(benchmark::State& state, const char* preset, bool fisheye) {
  const simulated_boards boards = one_camera(preset, state.range(0));
  if (!boards.problem.empty()) return state.SkipWithError(boards.problem.c_str());
  const cal_frame_set& set = boards.sets[0];
  const Eigen::Matrix3Xd board = board_points(set.board_width, set.board_height, set.board_scale);
  std::vector<std::vector<cv::Point3f>> objects;
  std::vector<std::vector<cv::Point2f>> images;
  for (const frame_views& frame : boards.frames[0]) {
    auto& object = objects.emplace_back();
    auto& image = images.emplace_back();
    for (Eigen::Index k = 0; k < board.cols(); ++k) {
      const Eigen::Matrix2Xd& corners = frame[0].corners;
      object.emplace_back(static_cast<float>(board(0, k)), static_cast<float>(board(1, k)), 0.F);
      image.emplace_back(static_cast<float>(corners(0, k)), static_cast<float>(corners(1, k)));
    }
  }
  const camera_details& details = boards.details[0];
  const model_map start = initial_model(details);
  const double focal = value_of(start, H_0);
  const cv::Matx33d guess(focal, 0, details.width / 2.0, 0, focal, details.height / 2.0, 0, 0, 1);
  cv::Mat camera, distortion, rotations, translations;
  for (auto _ : state) {
    camera = cv::Mat(guess);
    distortion = cv::Mat::zeros(1, fisheye ? 4 : 5, CV_64F);
    if (fisheye) {
      cv::fisheye::calibrate(objects, images, {details.width, details.height}, camera, distortion,
                             rotations, translations,
                             cv::fisheye::CALIB_USE_INTRINSIC_GUESS |
                                 cv::fisheye::CALIB_RECOMPUTE_EXTRINSIC |
                                 cv::fisheye::CALIB_FIX_SKEW);
    } else {
      cv::calibrateCamera(objects, images, {details.width, details.height}, camera, distortion,
                          rotations, translations, cv::CALIB_USE_INTRINSIC_GUESS);
    }
  }
  const Eigen::Matrix2Xd pixels = grid_of(details, boards.truth[0]);
  std::vector<cv::Vec2d> image, plane;
  for (Eigen::Index i = 0; i < pixels.cols(); ++i) image.emplace_back(pixels(0, i), pixels(1, i));
  if (fisheye) {
    cv::fisheye::undistortPoints(image, plane, camera, distortion);
  } else {
    cv::undistortPoints(image, plane, camera, distortion);
  }
  Eigen::Matrix3Xd rays(3, pixels.cols());
  for (Eigen::Index i = 0; i < rays.cols(); ++i) {
    const cv::Vec2d& at = plane[static_cast<std::size_t>(i)];
    rays.col(i) = Eigen::Vector3d(at[0], at[1], 1).normalized();
  }
  state.counters["error_pixels"] = error_in_pixels(rays, pixels, boards.truth[0]);
}
void lens_opencv_rectilinear(benchmark::State& state) { lens_opencv(state, "2-lens0", false); }
void lens_opencv_fisheye(benchmark::State& state) { lens_opencv(state, "2-lens1", true); }

void views(benchmark::internal::Benchmark* bench) {
  bench->ArgName("views")->Arg(30)->Arg(100)->Unit(benchmark::kMillisecond);
}
BENCHMARK(lens_ours_rectilinear)->Apply(views);
BENCHMARK(lens_opencv_rectilinear)->Apply(views);
BENCHMARK(lens_ours_fisheye)->Apply(views);
BENCHMARK(lens_opencv_fisheye)->Apply(views);

}  // namespace
}  // namespace ocpan

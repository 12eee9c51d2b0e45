// Projection beside OpenCV's fisheye model, which does comparable work per point.

#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/calib3d.hpp>
#ifdef OCPAN_HAS_OMNIDIR
#include <opencv2/ccalib/omnidir.hpp>
#endif

#include "model/projection.h"

namespace ocpan {
namespace {

Eigen::Matrix3Xd points_before_camera(Eigen::Index count) {
  Eigen::Matrix3Xd points(3, count);
  for (Eigen::Index i = 0; i < count; ++i) {
    const double u = static_cast<double>(i % 619) / 619 - 0.5;
    const double v = static_cast<double>(i % 523) / 523 - 0.5;
    points.col(i) << 600 * u, 400 * v, 20 * u * v;
  }
  return points;
}

model_map fisheye() {
  model_map model = initial_model({1280, 960, 150, 1});
  model[rho_0] = 0.01;
  model[rho_1] = -0.004;
  model[rho_2] = 0.0003;
  model[O_th] = pi - 0.003;
  return model;
}

const Eigen::Vector3d rotation(3.0, 0.1, -0.2);
const Eigen::Vector3d translation(-10, 20, -400);

void per_point(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ours(benchmark::State& state, bool derivatives) {
  const Eigen::Matrix3Xd points = points_before_camera(state.range(0));
  const model_map model = fisheye();
  Eigen::ArrayXd x, y;
  derivative_map dx, dy;
  for (auto _ : state) {
    project_points(x, y, dx, dy, points, model, rotation, translation, derivatives);
    benchmark::DoNotOptimize(x.data());
  }
  per_point(state);
}
void project_values(benchmark::State& state) { ours(state, false); }
void project_with_derivatives(benchmark::State& state) { ours(state, true); }

std::vector<cv::Vec3d> object_points(Eigen::Index count) {
  const Eigen::Matrix3Xd points = points_before_camera(count);
  std::vector<cv::Vec3d> object;
  for (Eigen::Index i = 0; i < count; ++i) {
    object.emplace_back(points(0, i), points(1, i), points(2, i));
  }
  return object;
}

// A projection of OpenCV's, project(object, image, jacobian).
template <typename Project>
void opencv(benchmark::State& state, bool jacobian, Project project) {
  const std::vector<cv::Vec3d> object = object_points(state.range(0));
  std::vector<cv::Vec2d> image;
  cv::Mat derivatives;
  for (auto _ : state) {
    if (jacobian) {
      project(object, image, derivatives);
    } else {
      project(object, image, cv::noArray());
    }
    benchmark::DoNotOptimize(image.data());
  }
  per_point(state);
}

const cv::Matx33d camera(500, 0, 640, 0, 500, 480, 0, 0, 1);
const cv::Vec4d distortion(0.01, -0.004, 0.0003, 0.0001);
const cv::Vec3d turn(0.1, 0.1, -0.2), shift(-10, 20, 400);

void fisheye_model(cv::InputArray object, cv::OutputArray image, cv::OutputArray jacobian) {
  cv::fisheye::projectPoints(object, image, turn, shift, camera, distortion, 0, jacobian);
}
void opencv_values(benchmark::State& state) { opencv(state, false, fisheye_model); }
void opencv_with_jacobian(benchmark::State& state) { opencv(state, true, fisheye_model); }

#ifdef OCPAN_HAS_OMNIDIR
// The unified model of a mirror or a fisheye.
void unified_model(cv::InputArray object, cv::OutputArray image, cv::OutputArray jacobian) {
  cv::omnidir::projectPoints(object, image, turn, shift, camera, 1.2, distortion, jacobian);
}
void omnidir_values(benchmark::State& state) { opencv(state, false, unified_model); }
void omnidir_with_jacobian(benchmark::State& state) { opencv(state, true, unified_model); }
BENCHMARK(omnidir_values)->Arg(54)->Arg(393216);
BENCHMARK(omnidir_with_jacobian)->Arg(54)->Arg(393216);
#endif

// As many points as one table has, in boards of 54: the size in which the solver meets them.
void project_boards_with_derivatives(benchmark::State& state) {
  const Eigen::Matrix3Xd points = points_before_camera(54);
  const model_map model = fisheye();
  Eigen::ArrayXd x, y;
  derivative_map dx, dy;
  const std::int64_t boards = state.range(0) / 54;
  for (auto _ : state) {
    for (std::int64_t board = 0; board < boards; ++board) {
      project_points(x, y, dx, dy, points, model, rotation, translation, true);
      benchmark::DoNotOptimize(x.data());
    }
  }
  per_point(state);
}

Eigen::Matrix2Xd pixels_of_picture(Eigen::Index count) {
  Eigen::Matrix2Xd pixels(2, count);
  for (Eigen::Index i = 0; i < count; ++i) {
    pixels.col(i) << static_cast<double>(i % 619) * 2.0 + 20, static_cast<double>(i % 523) * 1.8;
  }
  return pixels;
}

void unproject(benchmark::State& state) {
  const Eigen::Matrix2Xd pixels = pixels_of_picture(state.range(0));
  const model_map model = fisheye();
  Eigen::Matrix3Xd rays;
  for (auto _ : state) {
    unproject_points(rays, pixels, model);
    benchmark::DoNotOptimize(rays.data());
  }
  per_point(state);
}

void opencv_undistort(benchmark::State& state) {
  const Eigen::Matrix2Xd pixels = pixels_of_picture(state.range(0));
  std::vector<cv::Vec2d> image, plane;
  for (Eigen::Index i = 0; i < pixels.cols(); ++i) image.emplace_back(pixels(0, i), pixels(1, i));
  for (auto _ : state) {
    cv::fisheye::undistortPoints(image, plane, camera, distortion);
    benchmark::DoNotOptimize(plane.data());
  }
  per_point(state);
}

BENCHMARK(project_values)->Arg(54)->Arg(393216);
BENCHMARK(opencv_values)->Arg(54)->Arg(393216);
BENCHMARK(project_with_derivatives)->Arg(54)->Arg(393216);
BENCHMARK(project_boards_with_derivatives)->Arg(393216);
BENCHMARK(opencv_with_jacobian)->Arg(54)->Arg(393216);
BENCHMARK(unproject)->Arg(393216);
BENCHMARK(opencv_undistort)->Arg(393216);

}  // namespace
}  // namespace ocpan

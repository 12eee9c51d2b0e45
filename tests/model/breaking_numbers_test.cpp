#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "model/board_pose.h"
#include "model/projection.h"

namespace ocpan {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Numbers that a calibration file can't carry, and some that it can.
const std::vector<double> breaking_numbers = {
    infinity, -infinity, nan, 0, 1e300, -1e300, 1e-300, 1e-308, 1e-8, -1e-8, 1, -1, -0.5, 1e-12, 2};

Eigen::Matrix3Xd points_around() {
  Eigen::Matrix3Xd points(3, 6);
  points.col(0) << 10, 20, -500;
  points.col(1) << 0, 0, -500;  // on the axis
  points.col(2) << 0, 0, 500;   // behind
  points.col(3) << 100, 0, 0;   // in the plane through the centre
  points.col(4) << 0, 0, 0;     // the centre itself
  points.col(5) << 1e300, infinity, nan;
  return points;
}

TEST(BreakingNumbers, LetEveryProjectionEnd) {
  int projected = 0;
  for (const int lens : {0, 1, 2}) {
    for (int key = 0; key < parameter_count; ++key) {
      for (const double number : breaking_numbers) {
        model_map model = initial_model({640, 480, 90, lens});
        model[static_cast<parameter_name>(key)] = number;
        for (const bool want_derivatives : {false, true}) {
          Eigen::ArrayXd x, y;
          derivative_map dx, dy;
          project_points(x, y, dx, dy, points_around(), model, {0.1, 0.2, 0.3}, {1, 2, 3},
                         want_derivatives);
          projected += static_cast<int>(x.size() == 6 && y.size() == 6);
        }
        Eigen::Matrix3Xd rays;
        Eigen::Matrix2Xd pixels(2, 4);
        pixels << 320, 0, nan, 1e300, 240, 0, 5, infinity;
        unproject_points(rays, pixels, model);
        projected += static_cast<int>(rays.cols() == 4);
      }
    }
  }
  EXPECT_EQ(projected, 3 * parameter_count * static_cast<int>(breaking_numbers.size()) * 3);
}

TEST(BreakingNumbers, LetEveryPoseEstimateEnd) {
  Eigen::Matrix3Xd board(3, 12);
  for (int k = 0; k < 12; ++k) board.col(k) << 25 * (k % 4), 25 * (k / 4), 0;
  int ended = 0;
  for (const double number : breaking_numbers) {
    for (const parameter_name key : {C_0, A_th, H_0, V_1, O_th, rho_1, L}) {
      model_map model = initial_model({640, 480, 90, 0});
      Eigen::ArrayXd x, y;
      project_points(x, y, board, model, {3, 0.1, 0.2}, {-40, 30, -400});
      Eigen::Matrix2Xd pixels(2, 12);
      pixels << x.matrix().transpose(), y.matrix().transpose();
      model[key] = number;
      static_cast<void>(estimate_board_pose({pixels}, board, {model}));
      ++ended;
    }
  }
  EXPECT_EQ(ended, 7 * static_cast<int>(breaking_numbers.size()));
}

}  // namespace
}  // namespace ocpan

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "model/projection.h"
#include "tests/model/distorted_models.h"

namespace ocpan {
namespace {

using Eigen::ArrayXd;
using Eigen::Index;
using Eigen::Matrix2Xd;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;
using testing::derivative_case;
using testing::derivative_cases;
using testing::distorted_model;

TEST(UnprojectPoints, GivesUnitRaysThatProjectBackToTheirPixels) {
  int checks = 0;
  for (const derivative_case& c : derivative_cases()) {
    model_map model = c.model;
    model[C_0] = model[C_1] = model[C_2] = 0;
    Matrix2Xd grid(2, 19 * 15);
    Index n = 0;
    for (int i = 0; i < 19; ++i) {
      for (int j = 0; j < 15; ++j) grid.col(n++) << 130.5 + 40 * i, 110.25 + 36 * j;
    }
    Matrix3Xd rays;
    unproject_points(rays, grid, model);
    ArrayXd x, y;
    project_points(x, y, rays, model, Vector3d::Zero(), Vector3d::Zero());
    for (Index k = 0; k < n; ++k) {
      EXPECT_NEAR(rays.col(k).norm(), 1, 1e-12);
      EXPECT_NEAR(x[k], grid(0, k), 1e-5) << c.name;
      EXPECT_NEAR(y[k], grid(1, k), 1e-5) << c.name;
      ++checks;
    }
  }
  EXPECT_EQ(checks, 5 * 19 * 15);
}

TEST(UnprojectPoints, LeavesTheCentreOut) {
  model_map model = distorted_model(1);
  Matrix2Xd pixel(2, 1);
  pixel << 300, 200;
  Matrix3Xd with, without;
  unproject_points(with, pixel, model);
  model[C_0] = model[C_1] = model[C_2] = 0;
  unproject_points(without, pixel, model);
  EXPECT_EQ(with, without);
}

TEST(UnprojectPoints, ReadsTheLawAndNotItsVariable) {
  model_map model = distorted_model(1);
  Matrix2Xd pixel(2, 1);
  pixel << 300, 200;
  Matrix3Xd with, without;
  unproject_points(without, pixel, model);
  model[LAMBDA] = 0.9;
  unproject_points(with, pixel, model);
  EXPECT_EQ(with, without);
}

TEST(UnprojectPoints, PutsTheAxisOnTheImageCentreWhateverTheFramesSign) {
  for (double sign : {1.0, -1.0}) {
    model_map model = initial_model({1000, 800, 90, 0});
    model[V_1] *= sign;  // a mirrored frame
    Matrix2Xd pixel(2, 1);
    pixel << 500 + 500, 400;  // 45 degrees to the right
    Matrix3Xd ray;
    unproject_points(ray, pixel, model);
    EXPECT_NEAR(ray(0, 0), std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(ray(1, 0), 0, 1e-9);
    EXPECT_NEAR(ray(2, 0), -std::sqrt(0.5), 1e-9);
  }
}

TEST(UnprojectPoints, WithALawNearZeroTakesTheRadiusForTheAngle) {
  model_map model = initial_model({1000, 1000, 90, 0});
  model[L] = 1e-9;
  Matrix2Xd pixel(2, 1);
  pixel << 500 + 500 * 0.7, 500;
  Matrix3Xd ray;
  unproject_points(ray, pixel, model);
  EXPECT_NEAR(std::acos(-ray(2, 0)), 0.7, 1e-9);
}

TEST(UnprojectPoints, OnTheDistortionAxisIsNotANumber) {
  model_map model;
  model[A_th] = model[O_th] = 0;  // exactly (0, 0, 1)
  model[H_0] = model[V_1] = 100;
  model[L] = 1;
  Matrix2Xd pixel = Matrix2Xd::Zero(2, 2);  // the image centre
  pixel(0, 1) = 100;
  Matrix3Xd rays;
  unproject_points(rays, pixel, model);
  EXPECT_TRUE(std::isnan(rays(0, 0)));
  EXPECT_NEAR(rays(2, 1), std::sqrt(0.5), 1e-12);
}

TEST(UnprojectPoints, BeyondTheReachOfASineIsNotANumber) {
  const model_map model = initial_model({1000, 1000, 180, 1});
  Matrix2Xd pixel(2, 2);
  // The sine law ends at chi = 2, 707.1 pixels from the centre.
  pixel << 500 + 708, 500 + 706, 500, 500;
  Matrix3Xd rays;
  unproject_points(rays, pixel, model);
  EXPECT_TRUE(std::isnan(rays(0, 0)));
  EXPECT_FALSE(std::isnan(rays(0, 1)));
}

TEST(UnprojectPoints, MovesConvergedPixelsOnUntilTheLastHasConverged) {
  model_map model = initial_model({1000, 1000, 90, 0});
  model[rho_1] = 0.3;
  Matrix2Xd pair(2, 2);
  pair << 500 + 500 * 0.05, 500 + 500 * 3, 500, 500;
  const auto first_error = [&](const Matrix2Xd& grid) {
    Matrix3Xd rays;
    unproject_points(rays, grid, model);
    const double chi = rays(0, 0) / -rays(2, 0);
    return std::abs(chi + 0.3 * chi * chi * chi - 0.05);
  };
  EXPECT_GT(first_error(pair.leftCols(1)), 1e-11);  // one step is within 1e-8
  EXPECT_LT(first_error(pair), 1e-15);
}

TEST(UnprojectPoints, EndsAfterAHundredStepsOfNewton) {
  // Far out chi + chi^5 = chi0 falls to 0.8 of itself at each step, too slowly for a radius of
  // 1e13: its root is 398, but a hundred steps lead to 2 037.
  model_map model;
  model[A_th] = model[O_th] = 0;  // exactly (0, 0, 1)
  model[H_0] = model[V_1] = 1;
  model[rho_2] = 1;
  model[L] = 1;
  Matrix2Xd pixel(2, 1);
  pixel << 1e13, 0;
  double chi = 1e13;
  for (int step = 0; step < 100; ++step) {
    chi -= (chi + std::pow(chi, 5) - 1e13) / (1 + 5 * std::pow(chi, 4));
  }
  EXPECT_NEAR(chi, 2037, 1);
  Matrix3Xd ray;
  unproject_points(ray, pixel, model);
  EXPECT_NEAR(ray(0, 0) / ray(2, 0), chi, 1e-6);
}

TEST(UnprojectPoints, KeepsNobodyWaitingForAPixelThatIsNotANumber) {
  const model_map model = distorted_model(1);
  Matrix2Xd pair(2, 2), alone(2, 1);
  alone << 700, 100;
  pair << std::numeric_limits<double>::quiet_NaN(), 700, 5, 100;
  Matrix3Xd rays, expected;
  unproject_points(rays, pair, model);
  unproject_points(expected, alone, model);
  EXPECT_TRUE(std::isnan(rays(0, 0)));
  EXPECT_EQ(rays.col(1), expected.col(0));
}

}  // namespace
}  // namespace ocpan

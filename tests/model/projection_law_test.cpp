#include <cmath>

#include <gtest/gtest.h>

#include "model/projection.h"

namespace ocpan {
namespace {

using Eigen::ArrayXd;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;

// 1000 x 1000 pixels about (500, 500), looking along -z: x is 500 + 500 chi for a point in the
// plane of x and z, with chi the law's radius.
model_map camera_of_law(double law) {
  model_map model = initial_model({1000, 1000, 90, 0});
  model[L] = law;
  return model;
}

// A point off the axis by an angle, to the right.
Matrix3Xd point_at(double angle) { return Vector3d(3 * std::sin(angle), 0, -3 * std::cos(angle)); }

double x_of(const model_map& model, const Matrix3Xd& point) {
  ArrayXd x, y;
  project_points(x, y, point, model, Vector3d::Zero(), Vector3d::Zero());
  return x[0];
}

double x_by_lambda(const model_map& model, const Matrix3Xd& point) {
  ArrayXd x, y;
  derivative_map dx, dy;
  project_points(x, y, dx, dy, point, model, Vector3d::Zero(), Vector3d::Zero(), true);
  return dx[LAMBDA][0];
}

TEST(ProjectPoints, WithALawCloseToZeroTakesTheAngleForTheRadius) {
  int checks = 0;
  for (const double law : {1e-7, -1e-7, 1.1e-8, -1.1e-8}) {
    for (const double angle : {0.2, 1.0, 2.5}) {
      EXPECT_NEAR(x_of(camera_of_law(law), point_at(angle)), 500 + 500 * angle, 1e-4) << law;
      ++checks;
    }
  }
  EXPECT_EQ(checks, 12);
}

TEST(ProjectPoints, WithALawBelowItsThresholdHasARadiusThatIsHugeWhateverTheAngle) {
  // theta / sin(L theta) is 1 / L.
  int checks = 0;
  for (const double angle : {0.2, 1.0, 2.5}) {
    const double expected = 500 / 0.9e-8;
    EXPECT_NEAR(x_of(camera_of_law(0.9e-8), point_at(angle)), expected, 1e-5 * expected) << angle;
    ++checks;
  }
  EXPECT_EQ(checks, 3);
}

TEST(ProjectPoints, WithANegativeLawBelowItsThresholdHasAnInfiniteRadius) {
  // The part along the distortion axis is then 0: what is left is the part across it, which
  // meets the picture only because that axis is off the camera's.
  model_map model = camera_of_law(-0.9e-8);
  model[O_th] = pi - 0.1;
  const Vector3d point = point_at(0.5);
  const Vector3d o = direction_from_angles(pi - 0.1, 0);
  const Vector3d across = point - point.dot(o) * o;
  EXPECT_NEAR(x_of(model, point), 500 + 500 * across.x() / -across.z(), 1e-6);
}

TEST(ProjectPoints, ClampsTheAngleToAQuarterTurnOverTheLaw) {
  struct {
    double law, angle, radius;
  } const cases[] = {
      {-1, 120, 1},                              // the sine of 90 degrees
      {-1, 80, std::sin(80 * pi / 180)},         // not yet
      {0.5, 150, 2 * std::tan(75 * pi / 180)},   // the clamp is at 180 degrees
      {-0.5, 150, 2 * std::sin(75 * pi / 180)},  // here too
      {-0.75, 150, 1 / 0.75},                    // the sine of 90 degrees, from 120 on
      {-0.75, 110, std::sin(82.5 * pi / 180) / 0.75},
  };
  int checks = 0;
  for (const auto& c : cases) {
    EXPECT_NEAR(x_of(camera_of_law(c.law), point_at(c.angle * pi / 180)), 500 + 500 * c.radius,
                1e-9)
        << c.law << " " << c.angle;
    ++checks;
  }
  EXPECT_EQ(checks, 6);
}

TEST(ProjectPoints, MeetsTheLawsDerivativeAtZeroFromBothSides) {
  // chi is theta + LAMBDA theta^3 / 3 and so on, x is 500 + 500 chi.
  for (const double law : {2e-3, -2e-3}) {
    const double theta = std::atan2(1, 2);
    EXPECT_NEAR(x_by_lambda(camera_of_law(law), point_at(theta)), 500 * theta * theta * theta / 3,
                1e-3)
        << law;
  }
}

TEST(ProjectPoints, TakesACubeForTheLawsDerivativeBelowItsThreshold) {
  // Although chi itself is huge there, x is still 500 + 500 chi.
  for (const double theta : {0.3, 1.0, 2.0}) {
    const double expected = 500 * theta * theta * theta / 3;
    EXPECT_NEAR(x_by_lambda(camera_of_law(5e-9), point_at(theta)), expected, 1e-5 * expected)
        << theta;
  }
}

}  // namespace
}  // namespace ocpan

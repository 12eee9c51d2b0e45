#include "model/camera_frame.h"

#include <cmath>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

using Eigen::Vector3d;

TEST(CameraFrame, HoldsWhatTheModelHas) {
  const camera_frame camera(model_map{{C_0, 1},
                                      {C_1, 2},
                                      {C_2, 3},
                                      {H_0, 4},
                                      {H_1, 5},
                                      {H_2, 6},
                                      {V_0, 7},
                                      {V_1, 8},
                                      {V_2, 9},
                                      {A_th, 0.5},
                                      {A_ph, 0.7},
                                      {O_th, 0.6},
                                      {O_ph, -0.2},
                                      {rho_0, 0.1},
                                      {rho_1, -0.2},
                                      {rho_2, 0},
                                      {L, -0.5}});
  EXPECT_EQ(camera.centre, Vector3d(1, 2, 3));
  EXPECT_EQ(camera.horizontal, Vector3d(4, 5, 6));
  EXPECT_EQ(camera.vertical, Vector3d(7, 8, 9));
  EXPECT_EQ(camera.axis, direction_from_angles(0.5, 0.7));
  EXPECT_EQ(camera.distortion_axis, direction_from_angles(0.6, -0.2));
  EXPECT_EQ(camera.r0, 0.1);
  EXPECT_EQ(camera.r1, -0.2);
  EXPECT_EQ(camera.r2, 0);
  EXPECT_EQ(camera.law, -0.5);
  EXPECT_DOUBLE_EQ(camera.chi_limit, std::sqrt(1.1 / 0.6));
}

TEST(CameraFrame, TakesWhatTheModelLacksForZero) {
  const camera_frame camera(model_map{});
  EXPECT_EQ(camera.centre, Vector3d(0, 0, 0));
  EXPECT_EQ(camera.axis, direction_from_angles(0, 0));
  EXPECT_EQ(camera.law, 0);
  EXPECT_EQ(camera.chi_limit, 1e12);
}

TEST(CameraFrame, KnowsHowItsAxesTurnWithTheirAngles) {
  const double th = 1.1, ph = 0.4, step = 1e-6;
  const camera_frame camera(model_map{{A_th, th}, {A_ph, ph}, {O_th, ph}, {O_ph, th}});
  const auto slope = [&](double a_th, double a_ph, double by_th, double by_ph) -> Vector3d {
    return (direction_from_angles(a_th + by_th, a_ph + by_ph) -
            direction_from_angles(a_th - by_th, a_ph - by_ph)) /
           (2 * step);
  };
  EXPECT_TRUE(camera.axis_by[0].isApprox(slope(th, ph, step, 0), 1e-9));
  EXPECT_TRUE(camera.axis_by[1].isApprox(slope(th, ph, 0, step), 1e-9));
  EXPECT_TRUE(camera.distortion_axis_by[0].isApprox(slope(ph, th, step, 0), 1e-9));
  EXPECT_TRUE(camera.distortion_axis_by[1].isApprox(slope(ph, th, 0, step), 1e-9));
}

TEST(MonotonicLimit, IsOutOfReachWithoutDistortion) { EXPECT_EQ(monotonic_limit(0, 0, 0), 1e12); }

TEST(MonotonicLimit, OfACubicIsItsTurningPoint) {
  EXPECT_DOUBLE_EQ(monotonic_limit(0.1, -0.2, 0), std::sqrt(1.1 / 0.6));
  EXPECT_EQ(monotonic_limit(0.1, 0.2, 0), 1e12);
  EXPECT_EQ(monotonic_limit(0, -1e-13, 0), 1e12);  // r1 itself negligible
}

TEST(MonotonicLimit, TakesAnEvenSmallerQuinticTermForNone) {
  // 1e-13 below 0.2 * 1e-12: the quintic root would be some 1e6 away all the same.
  EXPECT_DOUBLE_EQ(monotonic_limit(0, -0.2, 1e-13), std::sqrt(1 / 0.6));
}

TEST(MonotonicLimit, OfAQuinticIsItsSmallestTurningPoint) {
  // f' = 1 - 0.6 * 3 c^2 ... : 1 + 3 r1 u + 5 r2 u^2 = 0 with r1 = -0.5, r2 = 0.1:
  // u = (1.5 -+ sqrt(2.25 - 2)) / 1 = 1 or 2.
  EXPECT_NEAR(monotonic_limit(0, -0.5, 0.1), 1.0, 1e-12);
  // r1 = 0.5, r2 = -0.7: 1 + 1.5 u - 3.5 u^2 = 0, u = 0.79087.
  EXPECT_NEAR(monotonic_limit(0, 0.5, -0.7), std::sqrt((1.5 + std::sqrt(2.25 + 14)) / 7), 1e-12);
}

TEST(MonotonicLimit, OfAQuinticWithoutTurningPointIsOutOfReach) {
  EXPECT_EQ(monotonic_limit(0, 0.1, 0.1), 1e12);
  EXPECT_EQ(monotonic_limit(0, -0.1, 0.5), 1e12);
}

}  // namespace
}  // namespace ocpan

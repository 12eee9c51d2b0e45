#include "tools/adjust/camera_increments.h"

#include <cmath>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "model/pose.h"
#include "model/projection.h"

namespace ocpan {
namespace {

using Eigen::Matrix3Xd;

constexpr double newton_error = 1e-7;  // of the rays

model_map skewed_fisheye() {
  model_map model = initial_model({1280, 960, 190, 1});
  model[C_0] = 12;
  model[A_th] = 2.8;
  model[A_ph] = 40 * pi + 0.3;  // many turns
  model[O_th] = 2.79;
  model[O_ph] = 0.31;
  model[H_1] = 30;
  model[V_0] = -7;
  model[rho_0] = 0.3;
  model[rho_1] = -0.02;
  model[rho_2] = 0.001;
  return model;
}

// Of pixels well within the picture; mirrored, y runs upwards.
Matrix3Xd rays_of(const model_map& model, bool mirrored = false) {
  Eigen::Matrix2Xd pixels(2, 63);
  for (int k = 0; k < 63; ++k) pixels.col(k) << 310 + 83 * (k % 9), 210 + 94 * (k / 9);
  if (mirrored) pixels.row(1) *= -1;
  Matrix3Xd rays;
  unproject_points(rays, pixels, model);
  return rays;
}

TEST(SplitCamera, KeepsWhereEveryPixelLooksThoughRho0Goes) {
  const model_map model = skewed_fisheye();
  const model_map joined = join_camera(split_camera(model));
  EXPECT_EQ(joined.at(rho_0), 0);
  EXPECT_EQ(joined.at(C_0), 12);
  const Matrix3Xd before = rays_of(model), after = rays_of(joined);
  ASSERT_TRUE(before.allFinite());
  EXPECT_LT((before - after).cwiseAbs().maxCoeff(), newton_error);
}

TEST(SplitCamera, KeepsAMirroredPicture) {
  model_map model = skewed_fisheye();
  for (const parameter_name key : {V_0, V_1, V_2}) model[key] = -model[key];
  const Matrix3Xd before = rays_of(model, true);
  ASSERT_TRUE(before.allFinite());
  EXPECT_LT((before - rays_of(join_camera(split_camera(model)), true)).cwiseAbs().maxCoeff(),
            newton_error);
}

TEST(JoinCamera, BringsAnglesIntoOneTurn) {
  const model_map joined = join_camera(split_camera(skewed_fisheye()));
  for (const parameter_name key : {A_th, A_ph, O_th, O_ph}) EXPECT_LE(std::abs(joined.at(key)), pi);
}

TEST(MovedCamera, TurnsAllOfItsDirections) {
  const camera_state camera = split_camera(skewed_fisheye());
  increment_vector step = increment_vector::Zero();
  step.segment<3>(turn_x) << 0.1, -0.2, 0.3;
  const Eigen::Matrix3d turn = camera.rig_from_camera * rotation_from_vector({0.1, -0.2, 0.3}) *
                               camera.rig_from_camera.transpose();
  EXPECT_LT((rays_of(join_camera(moved(camera, step))) - turn * rays_of(join_camera(camera)))
                .cwiseAbs()
                .maxCoeff(),
            newton_error);
}

TEST(MovedCamera, CarriesTheLawAlong) {
  increment_vector step = increment_vector::Zero();
  step[law] = 0.5;
  const camera_state camera = moved(split_camera(skewed_fisheye()), step);
  EXPECT_DOUBLE_EQ(camera.lens.at(LAMBDA), -0.125 + 0.5);
  EXPECT_DOUBLE_EQ(camera.lens.at(L), std::sqrt(0.375));
}

TEST(IncrementLayout, LeavesOutWhereCameraZeroStands) {
  EXPECT_EQ(increment_layout::first(0), 0);
  EXPECT_EQ(increment_layout::first(1), 10);
  EXPECT_EQ(increment_layout::first(2), 26);
  EXPECT_EQ(increment_layout::size(2), 26);
}

}  // namespace
}  // namespace ocpan

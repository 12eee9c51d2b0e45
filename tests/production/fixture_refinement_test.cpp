#include "production/fixture_refinement.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "tests/production/refinement_scene.h"

namespace ocpan {
namespace {

using testing::radius;
using testing::solve_by_hand;
using testing::tolerances;
using testing::true_measurement;
using testing::true_rig;

double worst_error(const pair_measurement& measurement, const rig& models) {
  double worst = 0;
  for (std::size_t k = 0; k < measurement.poses.size(); ++k) {
    for (std::size_t side = 0; side < 2; ++side) {
      Eigen::ArrayXd x, y;
      project_points(x, y, measurement.poses[k].translation, models[measurement.cameras[side]],
                     Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
      worst =
          std::max(worst, (Eigen::Vector2d(x[0], y[0]) - measurement.shots[k][side].col(0)).norm());
    }
  }
  return worst;
}

TEST(FeatureStart, LiesOnTheSphereTowardsTheMiddleOfItsPoints) {
  EXPECT_TRUE(feature_start({0, 2, 0}, {0, 3, 0}, 10).isApprox(Eigen::Vector3d(0, 10, 0)));
  EXPECT_TRUE(feature_start({1, 0, 0}, {0, 1, std::sqrt(2)}, 10)
                  .isApprox(Eigen::Vector3d(5, 5, 10 / std::sqrt(2))));
  EXPECT_TRUE(feature_start({0, 0, -1}, {0, 0, -3}, 10).isApprox(Eigen::Vector3d(0, 0, -10)));
}

TEST(FeatureStart, HoldsForEveryDirection) {
  std::mt19937 generator(2);
  std::normal_distribution<double> normal;
  for (int k = 0; k < 100; ++k) {
    const Eigen::Vector3d a(normal(generator), normal(generator), normal(generator));
    const Eigen::Vector3d b(normal(generator), normal(generator), normal(generator));
    EXPECT_TRUE(feature_start(a, b, radius).isApprox(radius * (a + b).normalized(), 1e-12)) << k;
  }
}

TEST(PairMeasurements, HoldAShotAndAPosePerMatch) {
  const std::vector<std::vector<prod_corner>> corners{
      {{1, 2, 0, 0, 0, 0}, {3, 4, 0, 0, 0, 0}}, {}, {{5, 6, 0, 0, 0, 0}, {7, 8, 0, 0, 0, 0}}};
  sphere_points lower(3, 2), higher(3, 2);
  lower << 0, 1, 1, 0, 0, 0;
  higher << 0, 0, 0, 1, 1, 0;
  const auto measurements =
      build_pair_measurements({{0, 1}, {0, 2}}, {{{0, 1}, {}}, {{0, 2}, {{1, 0}, {0, 1}}}}, corners,
                              {lower, sphere_points(3, 0), higher}, 10);
  ASSERT_EQ(measurements.size(), 1u);  // the pair without a match gives no entry
  const pair_measurement& found = measurements[0];
  EXPECT_EQ(found.cameras, (std::vector<std::size_t>{0, 2}));
  EXPECT_EQ(found.board_points, Eigen::Vector3d::Zero());
  ASSERT_EQ(found.shots.size(), 2u);
  EXPECT_EQ(found.shots[0][0], Eigen::Vector2d(3, 4));
  EXPECT_EQ(found.shots[0][1], Eigen::Vector2d(5, 6));
  EXPECT_EQ(found.shots[1][0], Eigen::Vector2d(1, 2));
  EXPECT_EQ(found.shots[1][1], Eigen::Vector2d(7, 8));
  EXPECT_EQ(found.poses[0].rotation, Eigen::Vector3d::Zero());
  const Eigen::Vector3d middle(1, 0, 1);
  EXPECT_TRUE(found.poses[0].translation.isApprox(10 * middle.normalized()));
  EXPECT_TRUE(found.poses[1].translation.isApprox(Eigen::Vector3d(0, 10, 0)));
}

class RefineRig : public ::testing::Test {
 protected:
  void refine(const rig& start) {
    measurements_ = {true_measurement(true_rig())};
    for (ModelPose& pose : measurements_[0].poses) pose.translation *= 1.002;
    refine_rig(refined_, measurements_, start, measurements_, radius, tolerances);
  }
  // The second camera turned by about half a degree, its picture scaled and shifted.
  static rig disturbed() {
    rig models = true_rig();
    models[1] = rotate_model(models[1], rotation_from_vector({0.004, -0.006, 0.003}));
    models[1][H_0] *= 1.001;
    models[1][V_2] += 0.5;
    return models;
  }
  rig refined_;
  std::vector<pair_measurement> measurements_;
};

TEST_F(RefineRig, BringsTheCamerasTogether) {
  ASSERT_GT(worst_error(true_measurement(true_rig()), disturbed()), 1);
  refine(disturbed());
  ASSERT_EQ(measurements_.size(), 1u);
  EXPECT_LT(worst_error(measurements_[0], refined_), 0.02);
}

TEST_F(RefineRig, KeepsWhatAnchorsTheFrameAndTheLenses) {
  const rig start = disturbed();
  refine(start);
  for (const parameter_name key : {C_0, C_1, C_2, A_th, A_ph, H_1}) {
    EXPECT_EQ(refined_[0].at(key), start[0].at(key)) << key;
  }
  for (std::size_t c = 0; c < 2; ++c) {
    for (const parameter_name key : {rho_0, rho_1, rho_2, L}) {
      EXPECT_EQ(refined_[c].at(key), start[c].at(key)) << c << ' ' << key;
    }
    EXPECT_EQ(refined_[c].size(), 18u);
  }
  for (const parameter_name key :
       {C_0, C_1, C_2, A_th, A_ph, H_0, H_1, H_2, V_0, V_1, V_2, O_th, O_ph}) {
    EXPECT_NE(refined_[1].at(key), start[1].at(key)) << key;
  }
  for (const parameter_name key : {H_0, H_2, V_0, V_1, V_2, O_th}) {
    EXPECT_NE(refined_[0].at(key), start[0].at(key)) << key;
  }
}

TEST_F(RefineRig, HoldsFeaturesNearTheSphereAndCamerasNearTheirPlaces) {
  const rig start = disturbed();
  refine(start);
  for (const ModelPose& pose : measurements_[0].poses) {
    EXPECT_NEAR(pose.translation.norm(), radius, 0.05 * radius);
    EXPECT_EQ(pose.rotation, Eigen::Vector3d::Zero());
  }
  for (const parameter_name key : {C_0, C_1, C_2}) {
    EXPECT_NEAR(refined_[1].at(key), start[1].at(key), 5) << key;
  }
}

TEST_F(RefineRig, KeepsTheDistortionAxisOnTheCameraAxis) {
  refine(disturbed());
  for (const model_map& model : refined_) {
    const double cosine = direction_from_angles(model.at(A_th), model.at(A_ph))
                              .dot(direction_from_angles(model.at(O_th), model.at(O_ph)));
    EXPECT_LT(1 - cosine, 0.001);
  }
}

TEST_F(RefineRig, GivesTheSolverItsTermsFreeListsAndLimits) {
  const rig start = disturbed();
  refine(start);
  std::vector<pair_measurement> groups{true_measurement(true_rig())};
  for (ModelPose& pose : groups[0].poses) pose.translation *= 1.002;
  const rig expected = solve_by_hand(groups, start, {24, false, 1e-5, 1e-7, 50, true});
  for (std::size_t c = 0; c < 2; ++c) {
    for (const auto& [key, value] : expected[c]) {
      EXPECT_NEAR(refined_[c].at(key), value, 1e-9 * std::max(1.0, std::abs(value))) << c << key;
    }
  }
}

TEST_F(RefineRig, LeavesTheRigAsItIsWithoutMeasurements) {
  const rig start = disturbed();
  rig refined;
  std::vector<pair_measurement> none;
  refine_rig(refined, none, start, {}, radius, tolerances);
  EXPECT_TRUE(none.empty());
  ASSERT_EQ(refined.size(), 2u);
  for (std::size_t c = 0; c < 2; ++c) {
    for (const auto& [key, value] : start[c]) EXPECT_EQ(refined[c].at(key), value) << key;
  }
}

}  // namespace
}  // namespace ocpan

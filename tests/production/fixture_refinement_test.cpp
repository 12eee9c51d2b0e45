#include "production/fixture_refinement.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "model/constraint_terms.h"
#include "model/projection.h"
#include "model/rigid_rotation.h"
#include "solver/solve_stage.h"

namespace ocpan {
namespace {

constexpr double radius = 1000;
const refinement_tolerances tolerances{5.0, 20.0, 0.10000000149011612};

// Two cameras a quarter turn apart whose distortion axes are near their own.
rig true_rig() {
  model_map model = initial_model({640, 480, 120, 1});
  model[H_2] += 1.5;
  model[V_2] -= 2.5;
  model[O_th] -= 0.004;
  model[rho_1] = -0.01;
  rig models{model, rotate_model(model, rotation_from_vector({0, 1.2, 0}))};
  models[1][C_0] = 20;
  models[1][C_2] = -15;
  return models;
}

// What both cameras see of a field of points on the sphere between them.
pair_measurement true_measurement(const rig& models) {
  pair_measurement measurement{{0, 1}, Eigen::Matrix3Xd::Zero(3, 1), {}, {}};
  for (double azimuth = 0.35; azimuth <= 0.86; azimuth += 0.05) {
    for (double elevation = -0.4; elevation <= 0.41; elevation += 0.08) {
      const Eigen::Vector3d feature =
          radius * Eigen::Vector3d(-std::sin(azimuth) * std::cos(elevation), std::sin(elevation),
                                   -std::cos(azimuth) * std::cos(elevation));
      std::vector<Eigen::Matrix2Xd> seen;
      for (const model_map& model : models) {
        Eigen::ArrayXd x, y;
        project_points(x, y, feature, model, Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
        seen.emplace_back(Eigen::Vector2d(x[0], y[0]));
      }
      measurement.shots.push_back(seen);
      measurement.poses.push_back({Eigen::Vector3d::Zero(), feature});
    }
  }
  return measurement;
}

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

// The camera terms by hand, and all else that the solver is told.
TEST_F(RefineRig, GivesTheSolverItsTermsFreeListsAndLimits) {
  const rig start = disturbed();
  refine(start);
  std::vector<constraint_term> terms;
  for (std::size_t c = 0; c < 2; ++c) {
    const Eigen::Vector3d a = direction_from_angles(start[c].at(A_th), start[c].at(A_ph));
    const Eigen::Vector3d h(start[c].at(H_0), start[c].at(H_1), start[c].at(H_2));
    const Eigen::Vector3d v(start[c].at(V_0), start[c].at(V_1), start[c].at(V_2));
    terms.push_back(make_axis_term(c, 0.0001));
    terms.push_back(make_prior_term(C_0, c, start[c].at(C_0), 0.1F));
    terms.push_back(make_prior_term(C_1, c, start[c].at(C_1), 0.1F));
    terms.push_back(make_prior_term(C_2, c, start[c].at(C_2), 0.1F));
    terms.push_back(make_center_y_term(c, v.dot(a), 20));
    terms.push_back(make_center_x_term(c, h.dot(a), 20));
    terms.push_back(make_scale_y_term(c, v.norm(), 200));
    terms.push_back(make_scale_x_term(c, h.norm(), 200));
  }
  // 5 percent: (2 - 0.05) * 0.05 * 0.1.
  const pose_term sphere = make_radius_term(radius, radius * std::sqrt(0.00975));
  const solve_settings settings{24, false, 1e-5, 1e-7, 50, true};
  std::vector<pair_measurement> groups{true_measurement(true_rig())};
  for (ModelPose& pose : groups[0].poses) pose.translation *= 1.002;
  run_report report;
  rig expected;
  solve_stage(report, expected, groups, start, groups,
              {{H_0, H_2, V_0, V_1, V_2, O_th, O_ph},
               {H_0, H_1, H_2, V_0, V_1, V_2, A_th, A_ph, C_0, C_1, C_2, O_th, O_ph}},
              {T_0, T_1, T_2}, terms, {sphere}, settings);
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

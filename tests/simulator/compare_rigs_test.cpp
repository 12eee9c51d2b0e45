#include "simulator/compare_rigs.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "simulator/presets.h"

namespace ocpan {
namespace {

rig_description preset(const std::string& name) {
  rig_description description;
  EXPECT_EQ(make_preset(description, name), "");
  return description;
}

constexpr double degree = 0.017453292519943295;

TEST(CompareRigs, RigEqualsItself) {
  for (const char* name : {"3-lens0", "4-lens1-off-axis", "2-lens2"}) {
    const rig_description rig = preset(name);
    const auto differences = compare_rigs(models_of(rig), models_of(rig), details_of(rig));
    ASSERT_EQ(differences.size(), rig.cameras.size());
    for (const camera_difference& difference : differences) {
      EXPECT_NEAR(difference.rotation_degrees, 0, 1e-7) << name;
      EXPECT_NEAR(difference.position, 0, 1e-12) << name;
      EXPECT_NEAR(difference.mapping_pixels, 0, 1e-5) << name;
    }
  }
}

TEST(CompareRigs, TurnAndShiftOfTheWholeRigMakeNoDifference) {
  const rig_description rig = preset("4-lens1");
  std::vector<model_map> moved;
  const Eigen::Matrix3d turn = rotation_from_vector(Eigen::Vector3d(0.3, -0.2, 0.5));
  for (const model_map& model : models_of(rig)) {
    moved.push_back(rotate_model(model, turn));
    moved.back()[C_0] += 12;
    moved.back()[C_2] -= 7;
  }
  for (const camera_difference& difference : compare_rigs(moved, models_of(rig), details_of(rig))) {
    EXPECT_NEAR(difference.rotation_degrees, 0, 1e-7);
    EXPECT_NEAR(difference.position, 0, 1e-9);
    EXPECT_NEAR(difference.mapping_pixels, 0, 1e-5);
  }
}

TEST(CompareRigs, TurnOfOneCameraIsTold) {
  const rig_description rig = preset("3-lens0");
  std::vector<model_map> models = models_of(rig);
  const Eigen::Vector3d centre = vector_of(models[1], C_0);
  models[1] = rotate_model(models[1], rotation_from_vector({0, 0.02 * degree, 0}));
  models[1][C_0] = centre.x();
  models[1][C_1] = centre.y();
  models[1][C_2] = centre.z();
  const auto differences = compare_rigs(models, models_of(rig), details_of(rig));
  EXPECT_NEAR(differences[0].rotation_degrees, 0, 1e-7);
  EXPECT_NEAR(differences[1].rotation_degrees, 0.02, 1e-7);
  EXPECT_NEAR(differences[1].mapping_pixels, 0, 1e-5);
  EXPECT_NEAR(differences[2].rotation_degrees, 0, 1e-7);
}

TEST(CompareRigs, ShiftOfOneCameraIsTold) {
  const rig_description rig = preset("3-lens0");
  std::vector<model_map> models = models_of(rig);
  models[2][C_0] += 0.3;
  models[2][C_1] -= 0.4;
  const auto differences = compare_rigs(models, models_of(rig), details_of(rig));
  EXPECT_NEAR(differences[1].position, 0, 1e-12);
  EXPECT_NEAR(differences[2].position, 0.5, 1e-12);
}

TEST(CompareRigs, ScaleOfALensShowsInItsMapping) {
  // A scale of 1.01 moves a pixel by a hundredth of its distance to the centre: RMS
  // 0.01 sqrt((width^2 + height^2) / 12) over a picture, and a little more on its grid.
  const camera_details details{1000, 800, 60, 0};
  const rig truth{initial_model(details)};
  rig estimated = truth;
  estimated[0][H_0] *= 1.01;
  estimated[0][V_1] *= 1.01;
  const auto differences = compare_rigs(estimated, truth, {details});
  EXPECT_NEAR(differences[0].mapping_pixels, 0.01 * std::sqrt(1640000 / 12.), 0.25);
  EXPECT_NEAR(differences[0].rotation_degrees, 0, 1e-12);
}

TEST(CompareRigs, CentreOfALensIsMostlyATurn) {
  // Half a pixel of 866 per unit tangent; what a turn can't do stays far below it.
  const camera_details details{1000, 800, 60, 0};
  const rig truth{initial_model(details), initial_model(details)};
  rig estimated = truth;
  estimated[1][H_2] -= 0.5;
  const auto differences = compare_rigs(estimated, truth, {details, details});
  EXPECT_NEAR(differences[1].rotation_degrees, 0.5 / 866 / degree, 0.006);
  EXPECT_LT(differences[1].mapping_pixels, 0.1);
}

TEST(CompareRigs, CameraWithoutARayHasNoMapping) {
  const camera_details details{1000, 800, 60, 0};
  const rig truth{initial_model(details), initial_model(details)};
  rig estimated = truth;
  estimated[1][A_th] = std::numeric_limits<double>::quiet_NaN();
  const auto differences = compare_rigs(estimated, truth, {details, details});
  ASSERT_EQ(differences.size(), 2u);
  EXPECT_NEAR(differences[0].mapping_pixels, 0, 1e-9);
  EXPECT_TRUE(std::isnan(differences[1].mapping_pixels));
}

}  // namespace
}  // namespace ocpan

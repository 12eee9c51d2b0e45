// Whatever a calibration was made of: where it is worth nothing its evaluation doesn't call
// it good, and one that is called good is near the truth.
#include <limits>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "simulator/compare_rigs.h"
#include "tests/tools/evaluate/evaluated_rig.h"
#include "tools/evaluate/evaluate_pictures.h"
#include "tools/evaluate/hold_out.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::evaluated_rig;
using testing::found_of;
using testing::make_evaluated_rig;
using testing::pictures_of;

constexpr double noise = 0.1;  // pixels

// A rig whose boards' poses were changed, with the corners seen there.
class UselessResults : public ::testing::TestWithParam<const char*> {
 protected:
  evaluated_rig made = make_evaluated_rig(GetParam(), 10, noise);

  void see_anew() {
    made.corners = true_corners(made.description, made.poses);
    add_corner_noise(made.corners, noise, 7);
  }

  // The verdict on what the library calibrates from the corners.
  evaluation of_own_calibration() const {
    calibrated_pictures input;
    input.pictures = pictures_of(made);
    input.found = found_of(made);
    input.boards = seen_boards(input.pictures, input.found);
    input.details = made.details();
    const frame_numbers none_left_out = dealt_frames(input.pictures, 1);
    input.models = calibrated_without(1, none_left_out, input.pictures, input.found);
    return evaluate_pictures(input).found;
  }

  // The verdict on a calibration that came from elsewhere.
  evaluation of(const rig& models) const {
    calibrated_pictures input;
    input.models = models;
    input.details = made.details();
    input.boards = boards_of(made);
    return evaluate_pictures(input).found;
  }
};

bool says(const evaluation& found, verdict judged, const std::string& part) {
  for (const evaluation_finding& each : found.findings) {
    if (each.judged == judged && each.text.find(part) != std::string::npos) return true;
  }
  return false;
}

TEST_P(UselessResults, BoardsAllAtOnePoseAreUnusable) {
  for (auto& poses : made.poses) poses.assign(poses.size(), poses[0]);
  see_anew();
  const evaluation found = of_own_calibration();
  EXPECT_EQ(found.judged, verdict::unusable);
  EXPECT_TRUE(says(found, verdict::unusable, "their boards pin the seam down to"));
  EXPECT_TRUE(says(found, verdict::unusable, "degrees only; shoot more boards that both see"));
}

TEST_P(UselessResults, BoardsOnALineAreUnusable) {
  made.description.board.height = 1;
  see_anew();
  const evaluation found = of_own_calibration();
  EXPECT_EQ(found.judged, verdict::unusable);
  EXPECT_TRUE(says(found, verdict::unusable, "30 of 30 boards are left out"));
}

TEST_P(UselessResults, CamerasAtTheSamePlaceAreUnusable) {
  rig models = made.truth();
  models[1] = models[0];
  const evaluation found = of(models);
  EXPECT_EQ(found.judged, verdict::unusable);
  EXPECT_TRUE(says(found, verdict::unusable, "degrees from where the calibration has them"));
}

TEST_P(UselessResults, MirroredCamerasAreUnusable) {
  rig models = made.truth();
  for (model_map& model : models) {
    for (const parameter_name key : {H_0, H_1, H_2}) model[key] = -model[key];
  }
  const evaluation found = of(models);
  EXPECT_EQ(found.judged, verdict::unusable);
  EXPECT_TRUE(says(found, verdict::unusable, "or a lens is wrong") ||
              says(found, verdict::unusable, "boards are left out"));
}

TEST_P(UselessResults, CamerasWithoutParametersAreUnusable) {
  EXPECT_EQ(of(rig(2)).judged, verdict::unusable);
}

TEST_P(UselessResults, NumbersThatBreakAreCalledGoodOnlyNearTheTruth) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double breaking[] = {0, -1, 1e300, -1e300, 1e-8, infinity, -infinity};
  made = make_evaluated_rig(GetParam(), 4, noise);
  const rig truth = made.truth();
  int unusable = 0, good = 0;
  for (int k = 0; k < LAMBDA; ++k) {
    const auto key = static_cast<parameter_name>(k);
    for (const double number : breaking) {
      rig models = truth;
      models[1][key] = number;
      const evaluation found = of(models);
      unusable += found.judged == verdict::unusable ? 1 : 0;
      if (found.judged != verdict::good) continue;
      ++good;
      const camera_difference off = compare_rigs(models, truth, made.details())[1];
      EXPECT_LT(off.mapping_pixels, 0.5) << parameter_text(key) << " = " << number;
      EXPECT_LT(off.rotation_degrees, 0.1) << parameter_text(key) << " = " << number;
      EXPECT_LT(off.position, 1.5) << parameter_text(key) << " = " << number;
    }
    rig models = truth;
    models[1][key] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(of(models).judged, verdict::unusable) << parameter_text(key);
  }
  EXPECT_GT(unusable, 80);
  EXPECT_GT(good, 0);
}

INSTANTIATE_TEST_SUITE_P(Rigs, UselessResults, ::testing::Values("2-lens0", "2-lens1"));

// Edge-on boards leave a plain lens open by pixels; a fisheye learns enough from the curve
// that a line becomes, and from the other camera.
TEST(UselessViewsOfAPlainLens, BoardsSeenEdgeOnAreDoubtful) {
  evaluated_rig made = make_evaluated_rig("2-lens0", 10, noise);
  for (std::size_t s = 0; s < made.poses.size(); ++s) {
    const std::size_t camera = made.description.sets[s].cameras[0];
    const Eigen::Vector3d centre = vector_of(made.truth()[camera], C_0);
    for (ModelPose& pose : made.poses[s]) {
      Eigen::Matrix3d rotation;
      rotation.col(1) = (pose.translation - centre).normalized();  // in the board's plane
      rotation.col(0) = Eigen::Vector3d::UnitY().cross(rotation.col(1)).normalized();
      rotation.col(2) = rotation.col(0).cross(rotation.col(1));
      pose.rotation = vector_from_rotation(rotation);
    }
  }
  made.corners = true_corners(made.description, made.poses);
  add_corner_noise(made.corners, noise, 7);
  calibrated_pictures input;
  input.models = made.truth();
  input.details = made.details();
  input.boards = boards_of(made);
  const evaluation found = evaluate_pictures(input).found;
  EXPECT_NE(found.judged, verdict::good);
  EXPECT_TRUE(says(found, verdict::doubtful, "its boards pin its picture down to"));
}

}  // namespace
}  // namespace ocpan

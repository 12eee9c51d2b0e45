#include "tools/evaluate/hold_out.h"

#include <cmath>

#include <gtest/gtest.h>

#include "model/rigid_rotation.h"
#include "tests/tools/evaluate/evaluated_rig.h"
#include "tools/evaluate/judge_hold_out.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::evaluated_rig;
using testing::found_of;
using testing::make_evaluated_rig;
using testing::pictures_of;

TEST(HeldOut, ScoresEveryBoardOnce) {
  const evaluated_rig made = make_evaluated_rig("2-lens1", 4, 0.05);
  const std::vector<seen_board> boards = boards_of(made);
  std::size_t told = 0;
  const hold_out tested = held_out({2, false}, pictures_of(made), found_of(made), boards, {},
                                   [&](std::size_t done) { told = done; });
  EXPECT_EQ(told, 2u);
  ASSERT_EQ(tested.scores.size(), 2u);
  EXPECT_EQ(tested.scores[0].boards.size() + tested.scores[1].boards.size(), boards.size());
  EXPECT_EQ(tested.residuals.pixels.count, 16u * 54);
  EXPECT_EQ(tested.cameras[0].pixels.count + tested.cameras[1].pixels.count, 16u * 54);
}

TEST(HeldOut, CalibrationKnowsNothingOfItsPart) {
  const evaluated_rig made = make_evaluated_rig("2-lens1", 4, 0.05);
  const rig_pictures pictures = pictures_of(made);
  const frame_numbers part_of = dealt_frames(pictures, 2);
  found_boards found = found_of(made);
  const rig before = calibrated_without(1, part_of, pictures, found);
  int moved = 0;
  for (std::size_t s = 0; s < found.size(); ++s) {
    for (std::size_t f = 0; f < found[s].size(); ++f) {
      if (part_of[s][f] != 1) continue;
      for (picture_finding& finding : found[s][f]) finding.corners.array() += 10;
      ++moved;
    }
  }
  EXPECT_EQ(moved, 6);
  EXPECT_EQ(calibrated_without(1, part_of, pictures, found), before);
  EXPECT_NE(calibrated_without(0, part_of, pictures, found), before);
}

TEST(ScatterOfPair, IsTheJackknifesOfTwoModels) {
  // Two models a degree apart stand half a degree off their mean, one each way: the sum of
  // the squares is 0.5, half of it the variance.
  const evaluated_rig made = make_evaluated_rig("2-lens1", 2, 0);
  rig other = made.truth();
  other[1] = rotate_model(other[1], rotation_from_vector(Eigen::Vector3d(0, pi / 180, 0)));
  const pair_scatter scatter = scatter_of_pair({made.truth(), other}, made.details(), 0, 1);
  EXPECT_NEAR(scatter.turn_degrees, 0.5, 1e-9);
}

TEST(ScatterOfCameras, IsTheJackknifesOfThreeModels) {
  // With one of three models 3 pixels aside the squared distances to the mean sum up to
  // 4 + 1 + 1, two thirds of it the variance. The best turn takes most of a shift of the
  // picture up, so a scale is moved: by x / 100 over x from -480 to 479.
  const evaluated_rig made = make_evaluated_rig("2-lens0", 2, 0);
  const rig truth = made.truth();
  rig other = truth;
  other[0][H_0] = value_of(truth[0], H_0) * 1.01;
  const double one = scatter_of_cameras({truth, other}, made.details())[0].mapping_pixels * 2;
  const double three = scatter_of_cameras({truth, truth, other}, made.details())[0].mapping_pixels;
  EXPECT_NEAR(one, 0.01 * 960 / std::sqrt(12), 0.4);
  EXPECT_NEAR(three, one * std::sqrt(4.0 / 9), 1e-3);
  EXPECT_EQ(scatter_of_cameras({truth, other}, made.details())[1].mapping_pixels < 1e-9, true);
}

TEST(JudgeHoldOut, TellsWhichCameraIsUncertain) {
  evaluation result;
  hold_out tested;
  tested.by_camera = {{0.2}, {3}};
  judge_hold_out(result, tested);
  EXPECT_EQ(result.judged, verdict::doubtful);
  ASSERT_EQ(result.findings.size(), 1u);
  EXPECT_EQ(result.findings[0].text.find("Camera 2:"), 0u);
}

}  // namespace
}  // namespace ocpan

#include "tools/evaluate/evaluation.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "model/rigid_rotation.h"
#include "tests/tools/evaluate/evaluated_rig.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::evaluated_rig;
using testing::make_evaluated_rig;

class EvaluationOfTruth : public ::testing::TestWithParam<const char*> {};

TEST_P(EvaluationOfTruth, HasTheNoiseThatWasPutIn) {
  constexpr double noise = 0.1;
  const evaluated_rig made = make_evaluated_rig(GetParam(), 4, noise);
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards_of(made));
  // The six numbers of a pose take a little of the noise of its corners away.
  EXPECT_NEAR(found.residuals.pixels.rms, noise * std::sqrt(2), 0.07 * noise);
  EXPECT_NEAR(found.residuals.pixels.median, noise * 1.1774, 0.08 * noise);
  EXPECT_NEAR(found.residuals.pixels.percentile_95, noise * std::sqrt(2 * std::log(20)),
              0.2 * noise);
  for (const evaluated_camera& camera : found.cameras) {
    EXPECT_NEAR(camera.residuals.pixels.rms, noise * std::sqrt(2), 0.12 * noise);
  }
  EXPECT_EQ(found.pairs.size(), made.description.sets.size() - made.description.cameras.size());
  for (const evaluated_pair& pair : found.pairs) {
    ASSERT_TRUE(pair.own);
    EXPECT_LT(pair.own->turn_degrees, 4 * pair.own->turn_deviation_degrees);
    EXPECT_LT(pair.own->turn_degrees, 0.15);
  }
  for (const pair_loop& loop : found.loops) {
    EXPECT_LT(loop.turn_degrees, 3 * loop.turn_deviation_degrees);
  }
}

INSTANTIATE_TEST_SUITE_P(Rigs, EvaluationOfTruth,
                         ::testing::Values("2-lens0", "2-lens2", "4-lens1", "8-lens0"));

// A camera turned about an axis through its own centre.
model_map turned(const model_map& model, double degrees) {
  model_map result =
      rotate_model(model, rotation_from_vector(Eigen::Vector3d(degrees, 0, 0) * pi / 180));
  result[C_0] = value_of(model, C_0);
  result[C_1] = value_of(model, C_1);
  result[C_2] = value_of(model, C_2);
  return result;
}

TEST(EvaluateCalibration, TurnedCameraShowsInItsPairsAndNoOthers) {
  const evaluated_rig made = make_evaluated_rig("4-lens1", 5, 0.05);
  rig models = made.truth();
  models[2] = turned(models[2], 0.2);
  const evaluation found = evaluate_calibration(models, made.details(), boards_of(made));
  ASSERT_EQ(found.pairs.size(), 4u);
  for (const evaluated_pair& pair : found.pairs) {
    const bool has_turned = pair.first == 2 || pair.second == 2;
    ASSERT_TRUE(pair.own);
    EXPECT_NEAR(pair.own->turn_degrees, has_turned ? 0.2 : 0, 0.03) << pair.first << pair.second;
    EXPECT_EQ(pair.judged, has_turned ? verdict::doubtful : verdict::good);
  }
  EXPECT_EQ(found.judged, verdict::doubtful);
  ASSERT_FALSE(found.findings.empty());
  EXPECT_NE(found.findings[0].text.find("Cameras 2 and 3"), std::string::npos);
}

TEST(EvaluateCalibration, TurnedCameraLeavesTheLoopClosed) {
  const evaluated_rig made = make_evaluated_rig("4-lens1", 5, 0.05);
  for (const std::size_t camera : {2u, 3u}) {
    rig models = made.truth();
    models[camera] = turned(models[camera], 0.4);
    const evaluation found = evaluate_calibration(models, made.details(), boards_of(made));
    ASSERT_EQ(found.loops.size(), 1u);
    EXPECT_LT(found.loops[0].turn_degrees, 0.03) << camera;
    EXPECT_LT(found.loops[0].shift, 0.3) << camera;
  }
}

TEST(EvaluateCalibration, CameraMovedBetweenTwoPairsShowsInTheLoop) {
  evaluated_rig made = make_evaluated_rig("4-lens1", 5, 0.05);
  const rig truth = made.truth();
  const evaluation before = evaluate_calibration(truth, made.details(), boards_of(made));
  ASSERT_EQ(before.loops.size(), 1u);
  EXPECT_EQ(before.loops[0].cameras, (std::vector<std::size_t>{0, 1, 2, 3}));
  EXPECT_LT(before.loops[0].turn_degrees, 0.03);
  EXPECT_LT(before.loops[0].shift, 0.3);

  // Camera 2 stands elsewhere when this pair is shot.
  made.description.cameras[2].model = turned(truth[2], 0.4);
  const series_corners moved = true_corners(made.description, made.poses);
  const auto& sets = made.description.sets;
  const auto pair = std::find_if(sets.begin(), sets.end(), [](const series_description& set) {
    return set.cameras == std::vector<std::size_t>{2, 3};
  });
  ASSERT_NE(pair, sets.end());
  const auto moved_set = static_cast<std::size_t>(pair - sets.begin());
  made.corners[moved_set] = moved[moved_set];
  const evaluation after = evaluate_calibration(truth, made.details(), boards_of(made));
  ASSERT_EQ(after.loops.size(), 1u);
  EXPECT_NEAR(after.loops[0].turn_degrees, 0.4, 0.03);
  EXPECT_EQ(after.loops[0].judged, verdict::doubtful);
}

TEST(EvaluateCalibration, LoopOfExactCornersEndsWhereItBegan) {
  const evaluated_rig made = make_evaluated_rig("8-lens0", 4, 0);
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards_of(made));
  ASSERT_EQ(found.loops.size(), 1u);
  EXPECT_EQ(found.loops[0].cameras.size(), 8u);
  EXPECT_LT(found.loops[0].turn_degrees, 1e-5);
  EXPECT_LT(found.loops[0].shift, 1e-4);
}

TEST(EvaluateCalibration, OwnPoseOfAPairDoesNotDependOnWhereTheCalibrationHasIt) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.05);
  const std::vector<seen_board> boards = boards_of(made);
  rig models = made.truth();
  const evaluation right = evaluate_calibration(models, made.details(), boards);
  models[1] = turned(models[1], 1);
  models[1][C_0] += 3;
  const evaluation wrong = evaluate_calibration(models, made.details(), boards);
  ASSERT_TRUE(right.pairs.at(0).own && wrong.pairs.at(0).own);
  EXPECT_NEAR(right.pairs[0].own->own.degrees, wrong.pairs[0].own->own.degrees, 1e-3);
  EXPECT_NEAR(right.pairs[0].own->own.distance, wrong.pairs[0].own->own.distance, 1e-2);
  EXPECT_NEAR(wrong.pairs[0].own->shift, 3, 1);
  EXPECT_EQ(wrong.judged, verdict::unusable);
}

// The used boards, and the one that isn't.
const evaluated_board& only_left_out(const evaluation& found) {
  const auto out = [](const evaluated_board& board) { return board.fate != board_fate::used; };
  EXPECT_EQ(std::count_if(found.boards.begin(), found.boards.end(), out), 1);
  return *std::find_if(found.boards.begin(), found.boards.end(), out);
}

TEST(EvaluateCalibration, FrameWithAForeignBoardIsLeftOutAndNamed) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.05);
  std::vector<seen_board> boards = boards_of(made);
  ASSERT_EQ(boards[15].cameras.size(), 2u);
  boards[15].corners[1] = boards[14].corners[1];
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  const evaluated_board& out = only_left_out(found);
  EXPECT_EQ(out.set, boards[15].set);
  EXPECT_EQ(out.frame, boards[15].frame);
  EXPECT_EQ(out.fate, board_fate::torn_frame);
  EXPECT_NE(why_left_out(out).find("don't belong together"), std::string::npos);
  EXPECT_LT(found.residuals.pixels.rms, 0.08);
  EXPECT_EQ(found.cameras[1].left_out, 1u);
}

// Whether a finding of that verdict has this text in it.
bool finds(const evaluation& found, verdict judged, const std::string& part) {
  return std::any_of(found.findings.begin(), found.findings.end(), [&](const auto& finding) {
    return finding.judged == judged && finding.text.find(part) != std::string::npos;
  });
}

TEST(EvaluateCalibration, SingleFrameWithAForeignBoardIsDoubtful) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 10, 0.05);
  std::vector<seen_board> boards = boards_of(made);
  boards[25].corners[1] = boards[24].corners[1];
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_EQ(found.judged, verdict::doubtful);
  EXPECT_TRUE(finds(found, verdict::doubtful, "1 board is left out because cameras contradict"));
  EXPECT_EQ(found.pairs.at(0).judged, verdict::good);
}

TEST(EvaluateCalibration, BoardsLeftOutCountAgainstTheirPairHoweverManyOthersThereAre) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 10, 0.05);
  std::vector<seen_board> boards = boards_of(made);
  ASSERT_EQ(boards.size(), 30u);
  std::swap(boards[23].corners[1], boards[26].corners[1]);
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_TRUE(finds(found, verdict::doubtful, "2 of the 10 boards that both saw"));
  EXPECT_EQ(found.pairs.at(0).judged, verdict::doubtful);
  EXPECT_EQ(found.judged, verdict::doubtful);
}

// Three cameras that look the same way, so that each sees all five boards.
evaluated_rig make_three_that_see_all() {
  evaluated_rig made;
  EXPECT_EQ(make_preset(made.description, "3-lens0"), "");
  made.description.sets = {{"all", {0, 1, 2}, 5}};
  made.description.cameras[2].model = turned(made.description.cameras[0].model, 3);
  EXPECT_EQ(place_boards(made.poses, made.description), "");
  made.corners = true_corners(made.description, made.poses);
  return made;
}

TEST(EvaluateCalibration, CameraApartFromTwoOthersIsNamed) {
  const evaluated_rig made = make_three_that_see_all();
  std::vector<seen_board> boards = boards_of(made);
  boards[3].corners[1] = boards[2].corners[1];
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  const evaluated_board& out = only_left_out(found);
  EXPECT_EQ(out.frame, 3u);
  EXPECT_EQ(out.suspects, std::vector<std::size_t>{1});
}

TEST(EvaluateCalibration, PairIsNotBlamedForTheCameraApart) {
  const evaluated_rig made = make_three_that_see_all();
  std::vector<seen_board> boards = boards_of(made);
  std::swap(boards[3].corners[1], boards[2].corners[1]);
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_TRUE(finds(found, verdict::doubtful, "Cameras 1 and 2: 2 of the 5 boards"));
  EXPECT_TRUE(finds(found, verdict::doubtful, "Cameras 2 and 3: 2 of the 5 boards"));
  EXPECT_FALSE(finds(found, verdict::doubtful, "Cameras 1 and 3"));
}

TEST(EvaluateCalibration, BoardWithFlippedCornersIsNamedSo) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.05);
  std::vector<seen_board> boards = boards_of(made);
  boards[15].corners[1] = boards[15].corners[1].rowwise().reverse().eval();
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_EQ(only_left_out(found).fate, board_fate::flipped);
}

TEST(EvaluateCalibration, BoardWithoutFinitePoseIsNamedSo) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.05);
  std::vector<seen_board> boards = boards_of(made);
  boards[2].corners[0](0, 7) = std::numeric_limits<double>::quiet_NaN();
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_EQ(only_left_out(found).fate, board_fate::no_pose);
  EXPECT_TRUE(std::isfinite(found.residuals.pixels.rms));
}

TEST(EvaluateCalibration, BoardWhoseCornersFitNoPlaneIsNamedSo) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.05);
  std::vector<seen_board> boards = boards_of(made);
  for (Eigen::Index k = 0; k < boards[2].corners[0].cols(); k += 2) {
    boards[2].corners[0](1, k) += 12;
  }
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_EQ(only_left_out(found).fate, board_fate::bad_corners);
  EXPECT_EQ(only_left_out(found).suspects, std::vector<std::size_t>{0});
}

TEST(EvaluateCalibration, SingleBadCornerDoesNotMoveItsBoard) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0);
  std::vector<seen_board> boards = boards_of(made);
  boards[0].corners[0](0, 0) += 5;
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_NEAR(found.residuals.pixels.maximum, 5, 0.1);
  EXPECT_LT(found.residuals.pixels.percentile_95, 0.01);
}

TEST(EvaluateCalibration, ResidualAngleIsThatOfAPixelAtTheAxis) {
  // With a board whose corners are all shifted but for noise the pose takes the shift up, so
  // a single corner is moved: near the axis a pixel is 1 / scale radians.
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0);
  std::vector<seen_board> boards = boards_of(made);
  boards[0].corners[0](0, 0) += 5;
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  const corner_residual& moved = found.boards[0].views[0].corners[0];
  const double scale = value_of(made.truth()[0], H_0);
  const double cosine = std::cos(moved.axis_degrees * pi / 180);
  const double across = 1000 * moved.residual.norm() / scale * cosine;
  EXPECT_LE(moved.milliradians, across * 1.02);
  EXPECT_GE(moved.milliradians, across * cosine * 0.98);
}

TEST(EvaluateCalibration, RingsHoldEveryCornerOnce) {
  const evaluated_rig made = make_evaluated_rig("4-lens1", 5, 0.05);
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards_of(made));
  int rings = 0;
  for (const evaluated_camera& camera : found.cameras) {
    std::size_t count = 0;
    for (const angle_bin& ring : camera.by_angle) {
      count += ring.residuals.pixels.count;
      EXPECT_EQ(ring.to_degrees - ring.from_degrees, 10);
      ++rings;
    }
    EXPECT_EQ(count, camera.residuals.pixels.count);
    EXPECT_EQ(count, camera.boards * 54);
  }
  EXPECT_GE(rings, 28);
}

TEST(EvaluateCalibration, RigWithoutASharedBoardIsDoubtfulAndTellsWhom) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.05);
  std::vector<seen_board> boards = boards_of(made);
  boards.resize(12);
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_EQ(found.judged, verdict::doubtful);
  ASSERT_EQ(found.findings.size(), 1u);
  EXPECT_NE(found.findings[0].text.find("links camera 1 with camera 2"), std::string::npos);
}

TEST(EvaluateCalibration, NoBoardAtAllIsUnusable) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.05);
  const evaluation found = evaluate_calibration(made.truth(), made.details(), {});
  EXPECT_EQ(found.judged, verdict::unusable);
  EXPECT_EQ(found.cameras.size(), 2u);
}

TEST(EvaluateCalibration, ShuffledSeriesIsUnusableAndSaysSo) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.05);
  std::vector<seen_board> boards = boards_of(made);
  for (std::size_t f = 12; f + 1 < 18; ++f)
    std::swap(boards[f].corners[1], boards[f + 1].corners[1]);
  const evaluation found = evaluate_calibration(made.truth(), made.details(), boards);
  EXPECT_EQ(found.judged, verdict::unusable);
  EXPECT_NE(found.findings.at(0).text.find("shuffled"), std::string::npos)
      << found.findings[0].text;
}

}  // namespace
}  // namespace ocpan

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulator/compare_rigs.h"
#include "solver/solve_stage.h"
#include "solver/stage_lists.h"
#include "tests/tools/adjust/simulated_boards.h"
#include "tools/adjust/adjust_rig.h"

namespace ocpan {
namespace {

using testing::calibrated_from;
using testing::seen_boards_of;
using testing::simulate_boards;
using testing::simulate_preset;
using testing::simulated_boards;

constexpr double noise = 0.06;  // pixels, as corners of rendered boards have it
constexpr int series = 3;       // of noise

// RMS over the cameras and the series.
struct rig_error {
  double rotation = 0, position = 0, mapping = 0;

  void add(const rig& models, const simulated_boards& simulated) {
    for (const camera_difference& difference :
         compare_rigs(models, simulated.truth(), simulated.details())) {
      rotation = std::hypot(rotation, difference.rotation_degrees);
      position = std::hypot(position, difference.position);
      mapping = std::hypot(mapping, difference.mapping_pixels);
    }
  }
};

// Another full adjustment, by the library's own solver without a soft term, led by the hand:
// it starts at the truth, boards too.
rig adjusted_at_truth(const simulated_boards& simulated) {
  std::vector<view_group> groups;
  for (std::size_t s = 0; s < simulated.corners.size(); ++s) {
    groups.push_back({simulated.description.sets[s].cameras,
                      board_points(simulated.description.board), simulated.corners[s],
                      simulated.poses[s]});
  }
  rig models = simulated.truth();
  run_report report;
  for (int round = 0; round < 5; ++round) {
    solve_stage(report, models, groups, models, groups, free_for_all(models.size()), free_poses(),
                {}, {}, {});
  }
  return models;
}

adjusted_rig refined(const rig& models, const simulated_boards& simulated) {
  return adjust_rig(models, simulated.details(), seen_boards_of(simulated),
                    {0, bend_choice::if_borne, true});
}

class FullAdjustment : public ::testing::TestWithParam<const char*> {};

TEST_P(FullAdjustment, IsAsGoodFromTheCalibrationAsFromTheTruth) {
  rig_error found, at_truth, same_from_truth;
  for (int k = 1; k <= series; ++k) {
    const simulated_boards simulated =
        simulate_preset(GetParam(), noise, static_cast<std::uint64_t>(k));
    const std::vector<seen_board> boards = seen_boards_of(simulated);
    found.add(refined(calibrated_from(simulated), simulated).models, simulated);
    same_from_truth.add(adjust_rig(simulated.truth(), simulated.details(), boards, {}).models,
                        simulated);
    at_truth.add(adjusted_at_truth(simulated), simulated);
  }
  EXPECT_LE(found.rotation, 1.2 * at_truth.rotation);
  EXPECT_LE(found.position, 1.2 * at_truth.position);
  EXPECT_LE(found.mapping, 1.2 * at_truth.mapping);
  EXPECT_NEAR(found.rotation, same_from_truth.rotation, 0.02 * same_from_truth.rotation);
  EXPECT_NEAR(found.position, same_from_truth.position, 0.02 * same_from_truth.position);
  EXPECT_NEAR(found.mapping, same_from_truth.mapping, 0.02 * same_from_truth.mapping);
}

INSTANTIATE_TEST_SUITE_P(Rigs, FullAdjustment,
                         ::testing::Values("2-lens0-unlike", "4-lens0-unlike", "8-lens0-unlike",
                                           "2-lens1-unlike", "4-lens1-unlike", "8-lens1-unlike",
                                           "2-lens2-unlike", "4-lens2-unlike", "8-lens2-unlike"));

class RingOfFour : public ::testing::TestWithParam<const char*> {};

TEST_P(RingOfFour, IsWithinAFiftiethOfADegreeAndAFifthOfAPixel) {
  for (int k = 1; k <= series; ++k) {
    const simulated_boards simulated =
        simulate_preset(GetParam(), noise, static_cast<std::uint64_t>(k));
    const rig models = refined(calibrated_from(simulated), simulated).models;
    for (const camera_difference& difference :
         compare_rigs(models, simulated.truth(), simulated.details())) {
      EXPECT_LT(difference.rotation_degrees, 0.02);
      EXPECT_LT(difference.mapping_pixels, 0.2);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Rigs, RingOfFour, ::testing::Values("4-lens1-unlike", "4-lens2-unlike"));

// The calibration holds lenses alike, and these are.
TEST(AlikeLenses, StayAsTheyWereFound) {
  const simulated_boards simulated = simulate_preset("4-lens1", noise, 1);
  const rig found = calibrated_from(simulated);
  const adjusted_rig fit = refined(found, simulated);
  EXPECT_TRUE(fit.kept);
  EXPECT_EQ(fit.models, found);
}

double mean_residual(const rig& models, const simulated_boards& simulated) {
  const adjusted_rig fit = measure_rig(models, simulated.details(), seen_boards_of(simulated), {});
  double sum = 0, count = 0;
  for (const board_fit& board : fit.boards) {
    for (const Eigen::Matrix2Xd& residuals : board.residuals) {
      sum += residuals.colwise().norm().sum();
      count += static_cast<double>(residuals.cols());
    }
  }
  return sum / count;
}

class HeldOutFrames : public ::testing::TestWithParam<const char*> {};

TEST_P(HeldOutFrames, FitNoWorseThanBefore) {
  const simulated_boards simulated = simulate_preset(GetParam(), noise, 1);
  const rig before = calibrated_from(simulated);
  const rig after = refined(before, simulated).models;
  rig_description others = simulated.description;
  others.seed += 1000;
  const simulated_boards held_out = simulate_boards(others, noise, 2);
  EXPECT_LE(mean_residual(after, simulated), mean_residual(before, simulated));
  EXPECT_LE(mean_residual(after, held_out), mean_residual(before, held_out));
  // sqrt(pi / 2) sigma is the mean of perfect models.
  EXPECT_LT(mean_residual(after, held_out), 1.2 * std::sqrt(pi / 2) * noise);
}

INSTANTIATE_TEST_SUITE_P(Rigs, HeldOutFrames,
                         ::testing::Values("2-lens0-unlike", "4-lens1", "4-lens1-unlike",
                                           "8-lens1-unlike", "4-lens2-unlike"));

}  // namespace
}  // namespace ocpan

#include "tools/adjust/adjust_rig.h"

#include <cmath>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "model/rigid_rotation.h"
#include "simulator/compare_rigs.h"
#include "tests/tools/adjust/simulated_boards.h"
#include "tools/adjust/camera_increments.h"

namespace ocpan {
namespace {

using testing::seen_boards_of;
using testing::simulate_preset;
using testing::simulated_boards;

// The truth with every lens and place a little off.
rig disturbed(const rig& truth) {
  rig models = truth;
  for (std::size_t c = 0; c < models.size(); ++c) {
    const double sign = c % 2 == 0 ? 1 : -1;
    if (c > 0) {
      models[c] = rotate_model(models[c], rotation_from_vector({0.002, sign * 0.002, -0.001}));
      models[c][C_0] += 2 * sign;
      models[c][C_2] -= 2;
    }
    models[c][H_0] *= 1 + 0.003 * sign;
    models[c][H_2] += 2;
    models[c][V_2] -= 3 * sign;
    models[c][L] *= 1 + 0.01 * sign;
  }
  return models;
}

struct largest_difference {
  double rotation = 0, position = 0, mapping = 0;
};
largest_difference largest(const rig& models, const simulated_boards& simulated) {
  largest_difference most;
  for (const camera_difference& d : compare_rigs(models, simulated.truth(), simulated.details())) {
    most.rotation = std::max(most.rotation, d.rotation_degrees);
    most.position = std::max(most.position, d.position);
    most.mapping = std::max(most.mapping, d.mapping_pixels);
  }
  return most;
}

double scale_of(const model_map& model) { return value_of(split_camera(model).lens, H_1); }

TEST(AdjustRig, FindsTheTruthFromExactCorners) {
  const simulated_boards simulated = simulate_preset("3-lens1-unlike", 0, 1);
  const adjusted_rig fit =
      adjust_rig(disturbed(simulated.truth()), simulated.details(), seen_boards_of(simulated), {});
  EXPECT_TRUE(fit.converged);
  const largest_difference most = largest(fit.models, simulated);
  EXPECT_LT(most.rotation, 1e-4);
  EXPECT_LT(most.position, 2e-3);
  EXPECT_LT(most.mapping, 2e-3);
}

TEST(AdjustRig, EstimatesTheNoise) {
  const simulated_boards simulated = simulate_preset("3-lens1-unlike", 0.06, 1);
  const adjusted_rig fit =
      adjust_rig(simulated.truth(), simulated.details(), seen_boards_of(simulated), {});
  EXPECT_NEAR(fit.sigma, 0.06, 0.003);
}

TEST(AdjustRig, KeepsTheFrameOfCameraZero) {
  const simulated_boards simulated = simulate_preset("2-lens0-unlike", 0.06, 1);
  rig start = disturbed(simulated.truth());
  for (model_map& model : start) model = rotate_model(model, rotation_from_vector({0.4, 1, -2}));
  start[0][C_1] = 7;
  start[1][C_1] += 7;
  const adjusted_rig fit = adjust_rig(start, simulated.details(), seen_boards_of(simulated), {});
  for (const parameter_name key : {C_0, C_1, C_2, A_th, A_ph}) {
    EXPECT_NEAR(fit.models[0].at(key), value_of(start[0], key), 1e-9) << parameter_text(key);
  }
  const Eigen::Vector3d axis = direction_from_angles(start[0][A_th], start[0][A_ph]);
  const Eigen::Vector3d before = axis.cross(vector_of(start[0], H_0)).normalized();
  const Eigen::Vector3d after = axis.cross(vector_of(fit.models[0], H_0)).normalized();
  EXPECT_LT((before - after).norm(), 1e-9);
  EXPECT_LT(largest(fit.models, simulated).mapping, 0.3);
}

TEST(AdjustRig, TakesNoHarmFromSingleBadCorners) {
  simulated_boards simulated = simulate_preset("3-lens1-unlike", 0.06, 1);
  const rig clean =
      adjust_rig(simulated.truth(), simulated.details(), seen_boards_of(simulated), {}).models;
  for (auto& set : simulated.corners) set[1].back().col(5) += Eigen::Vector2d(6, -3);
  const adjusted_rig fit =
      adjust_rig(disturbed(simulated.truth()), simulated.details(), seen_boards_of(simulated), {});
  EXPECT_LT(largest(fit.models, simulated).mapping, 1.3 * largest(clean, simulated).mapping);
  EXPECT_LT(largest(fit.models, simulated).rotation, 1.3 * largest(clean, simulated).rotation);
  EXPECT_LT(fit.boards[1].weights[0][5], 0.01);
  EXPECT_GT(fit.boards[1].weights[0][6], 0.5);
}

// One camera of a pair took the board for one that lies the other way round.
TEST(AdjustRig, SetsAsideAViewWithItsCornersReversed) {
  simulated_boards simulated = simulate_preset("3-lens1-unlike", 0.06, 1);
  Eigen::Matrix2Xd& turned = simulated.corners.back()[2][1];
  turned = turned.rowwise().reverse().eval();
  const std::vector<seen_board> boards = seen_boards_of(simulated);
  const adjusted_rig fit =
      adjust_rig(disturbed(simulated.truth()), simulated.details(), boards, {});
  int aside = 0;
  for (std::size_t b = 0; b < boards.size(); ++b) {
    const bool is_the_one = boards[b].set == simulated.corners.size() - 1 && boards[b].frame == 2;
    for (std::size_t v = 0; v < boards[b].cameras.size(); ++v) {
      aside += fit.boards[b].set_aside[v];
      EXPECT_TRUE(is_the_one || !fit.boards[b].set_aside[v]) << "board " << b;
    }
  }
  EXPECT_EQ(aside, 1);
  EXPECT_LT(largest(fit.models, simulated).rotation, 0.03);
}

TEST(AdjustRig, HoldsWhatNoBoardTellsOf) {
  const simulated_boards simulated = simulate_preset("3-lens1-unlike", 0.06, 1);
  std::vector<seen_board> boards;
  for (const seen_board& board : seen_boards_of(simulated)) {
    if (board.cameras == std::vector<std::size_t>{0}) boards.push_back(board);
  }
  const rig start = disturbed(simulated.truth());
  const adjusted_rig fit = adjust_rig(start, simulated.details(), boards, {});
  const std::vector<camera_difference> differences =
      compare_rigs({start[0], fit.models[1]}, {start[0], start[1]}, simulated.details());
  EXPECT_LT(differences[1].mapping_pixels, 1e-4);
  EXPECT_LT(differences[1].rotation_degrees, 0.1);
  EXPECT_TRUE(fit.covariance.allFinite());
}

TEST(AdjustRig, MakesLensesAlikeWithAStrongTie) {
  const simulated_boards simulated = simulate_preset("3-lens1-unlike", 0.06, 1);
  const std::vector<seen_board> boards = seen_boards_of(simulated);
  const auto scale_difference = [&](double tie) {
    const adjusted_rig fit =
        adjust_rig(simulated.truth(), simulated.details(), boards, {tie, bend_choice::flat});
    return std::abs(scale_of(fit.models[0]) - scale_of(fit.models[1]));
  };
  const double free = scale_difference(0), tied = scale_difference(1),
               strong = scale_difference(1e4);
  EXPECT_GT(free, 1);
  EXPECT_NEAR(tied, free, 0.1 * free);
  EXPECT_LT(strong, 0.01 * free);
}

TEST(MeasureRig, LaysTheBoardsAndLeavesTheRig) {
  const simulated_boards simulated = simulate_preset("3-lens1-unlike", 0.06, 1);
  const rig truth = simulated.truth();
  const adjusted_rig fit = measure_rig(truth, simulated.details(), seen_boards_of(simulated), {});
  EXPECT_EQ(fit.models, truth);
  EXPECT_NEAR(fit.sigma, 0.06, 0.003);
  EXPECT_LT((fit.boards[0].pose.translation - simulated.poses[0][0].translation).norm(), 2);
  EXPECT_EQ(fit.covariance.rows(), increment_layout::size(3));
}

}  // namespace
}  // namespace ocpan

#pragma once

#include <optional>
#include <vector>

#include <Eigen/Core>

#include "model/parameters.h"
#include "tools/boards/seen_boards.h"
#include "tools/evaluate/evaluation.h"

namespace ocpan {

// How two cameras stand to one another by their models.
relative_pose calibrated_pose(const model_map& first, const model_map& second);

// A board that both cameras of a pair saw.
struct pair_board {
  const Eigen::Matrix3Xd* points;          // 3 x N, board frame
  const Eigen::Matrix2Xd* first_corners;   // 2 x N pixels
  const Eigen::Matrix2Xd* second_corners;  // 2 x N pixels
  ModelPose rig_from_board;                // where the calibration has it
};

// Places the second camera by a pair's boards alone, robustly, all lenses held fixed. None
// with fewer than three boards, or if the fit isn't finite.
std::optional<pair_own_pose> fitted_pair(const model_map& first, const model_map& second,
                                         const std::vector<pair_board>& boards);

}  // namespace ocpan

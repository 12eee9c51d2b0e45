#pragma once

#include <cstddef>
#include <vector>

#include <Eigen/Core>

#include "model/pose.h"

namespace ocpan {

// The solver's unit: some cameras that saw one board, at one pose per shot.
struct view_group {
  std::vector<std::size_t> cameras;                  // indices into the rig; one may stand twice
  Eigen::Matrix3Xd board_points;                     // 3 x N, board frame
  std::vector<std::vector<Eigen::Matrix2Xd>> shots;  // [shot][camera of the group], 2 x N pixels
  std::vector<ModelPose> poses;                      // per shot, board -> rig
};

}  // namespace ocpan

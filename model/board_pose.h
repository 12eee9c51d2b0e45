#pragma once

#include <vector>

#include <Eigen/Core>

#include "model/parameters.h"
#include "model/pose.h"

namespace ocpan {

// Estimates where a flat board stands: a direct linear transform on the rays of the first
// view (Hartley & Zisserman, Multiple View Geometry, 2004, chapter 7, for a plane), then a
// refinement of the six pose numbers over all views.
//
//   views         2 x N pixels each, corner k being board point k
//   board_points  3 x N, board frame, z = 0, N at least 3
//   models        one per view, in the same order
//
// Returns the pose board -> rig. Reports nothing: a board whose points lie on a line gives
// an arbitrary pose, pixels that aren't finite give one that is not a number.
ModelPose estimate_board_pose(const std::vector<Eigen::Matrix2Xd>& views,
                              const Eigen::Matrix3Xd& board_points, const rig& models);

}  // namespace ocpan

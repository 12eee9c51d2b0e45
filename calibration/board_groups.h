#pragma once

#include <cstddef>
#include <vector>

#include "calibration/chessboard_detection.h"
#include "calibration/frame_sets.h"
#include "calibration/pair_alignment.h"
#include "model/parameters.h"
#include "solver/view_group.h"

namespace ocpan {

// The boards seen in all frames: per set, per frame, the views of its cameras.
using board_frames = std::vector<std::vector<frame_views>>;

// The inner corners of a board, 3 x N: corner k at (k mod width, k div width, 0) times
// scale.
Eigen::Matrix3Xd board_points(int width, int height, double scale);

// In all of these the views of a frame stand side by side with the set's cameras, views
// without a board play no part, and a view or frame whose estimated pose is not a number
// is left out with a line that names it.

// Groups of single cameras: per set, one for each camera that saw a board, in ascending
// order of camera index, each view a shot with its own pose in the camera's frame.
std::vector<view_group> single_camera_groups(const std::vector<cal_frame_set>& sets,
                                             const board_frames& frames, const rig& models);

// For each two cameras that saw a board in one frame, the corners in the frames of both.
pair_points collect_pair_points(const std::vector<cal_frame_set>& sets, const board_frames& frames,
                                const rig& models);

// Groups of cameras that saw the board together, and how many belong to each set.
struct rig_groups {
  std::vector<view_group> groups;
  std::vector<std::size_t> groups_per_set;
};

// Per set, one group for each list of cameras that together saw the board in some frame,
// in the lists' lexicographic order, with the boards' poses in the rig's frame.
rig_groups shared_board_groups(const std::vector<cal_frame_set>& sets, const board_frames& frames,
                               const rig& models);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <vector>

#include <Eigen/Core>

#include "tools/boards/found_boards.h"

namespace ocpan {

// One board as the cameras of the rig saw it at one moment.
struct seen_board {
  std::size_t set = 0;                    // into rig_pictures::sets
  std::size_t frame = 0;                  // in the set
  std::vector<std::size_t> cameras;       // into the rig, ascending; at least one
  std::vector<Eigen::Matrix2Xd> corners;  // per camera 2 x N pixels, in one order
  Eigen::Matrix3Xd points;                // 3 x N, board frame, unit of board_scale
};

// Every board that any camera saw, in the order of sets and frames. A picture that stands in
// several sets counts once, in the frame in which the most cameras saw the board (the
// earlier of equals).
[[nodiscard]] std::vector<seen_board> seen_boards(const rig_pictures& pictures,
                                                  const found_boards& boards);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <vector>

#include <Eigen/Core>

#include "tools/adjust/adjust_rig.h"
#include "tools/boards/seen_boards.h"

namespace ocpan {

// One physical board: its corners if it were flat, and by how much each stands out of the
// plane for a unit of bend along the width and along the height.
struct board_shape {
  Eigen::Matrix3Xd points;                            // 3 x N, board frame
  Eigen::Array<double, Eigen::Dynamic, 2> bend_rows;  // N x 2: 1 - u^2 and 1 - v^2
};

// The physical boards among the seen ones, and which one each is. Boards with the same
// corners in the same places count as one: a user has one board or a few different ones.
struct physical_boards {
  std::vector<board_shape> shapes;
  std::vector<std::size_t> of_seen;  // side by side with the seen boards
};
physical_boards tell_boards_apart(const std::vector<seen_board>& boards);

// The corners of a bent board, into a matrix of their size.
void bend_points(Eigen::Matrix3Xd& bent, const board_shape& shape, const board_bend& bend);

}  // namespace ocpan

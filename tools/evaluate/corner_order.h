#pragma once

#include <vector>

#include <Eigen/Core>

namespace ocpan {

// The corners of a board in the other orders in which a detector may give them: from the
// opposite corner, and for a square board from the two others, always in the same sense.
//
//   corners   2 x N pixels
//   points    3 x N, row by row, the first with y = 0
std::vector<Eigen::Matrix2Xd> other_orders(const Eigen::Matrix2Xd& corners,
                                           const Eigen::Matrix3Xd& points);

}  // namespace ocpan

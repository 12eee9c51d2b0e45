#pragma once

#include "tools/adjust/adjustment.h"

namespace ocpan {

// Lays each board where it fits the cameras of the state best under the robust loss, and
// estimates problem.sigma on the way. A board is tried as all its cameras see it together and
// as each of them sees it alone, so that a camera that took it the wrong way round doesn't
// spoil its place. A view that no place can be had from is set aside.
void place_boards_before(adjustment_problem& problem, adjustment_state& state);

// Lays one board anew, where most of what its cameras see of it fits.
void place_board(adjustment_problem& problem, adjustment_state& state, std::size_t board,
                 const rig& models);

// The distance of each corner of a view between where it is seen and projected, pixels, with
// the projection's clamps.
Eigen::Matrix2Xd view_residuals(const adjustment_problem& problem, const adjustment_state& state,
                                std::size_t board, std::size_t view);

// The deviation of a corner's coordinate that a share of the corners, the best ones, speaks
// for: their largest distance over that share's quantile for normal noise in two coordinates.
// Views set aside don't count.
//
//   moving   numbers that were fitted
double sigma_of(const adjustment_problem& problem, const adjustment_state& state, double share,
                Eigen::Index moving);

}  // namespace ocpan

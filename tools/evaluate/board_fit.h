#pragma once

#include <vector>

#include <Eigen/Core>

#include "model/parameters.h"
#include "tools/evaluate/rigid_motion.h"

namespace ocpan {

// What one camera saw of a board. Holds both by reference.
struct sighting {
  const model_map* model;
  const Eigen::Matrix2Xd* corners;  // 2 x N pixels
};

// Found less projected, 2 x N pixels, with the projection's clamps.
//
//   points   3 x N, in the rig's frame
Eigen::Matrix2Xd residuals_of(const sighting& seen, const Eigen::Matrix3Xd& points);

// A sighting linearised, without the clamps: a row for each corner's x, then one for each
// corner's y.
struct sighting_rows {
  Eigen::VectorXd residuals;                             // found less projected, pixels
  Eigen::Matrix<double, Eigen::Dynamic, 3> by_position;  // of the projection, by the point
};
sighting_rows rows_of(const sighting& seen, const Eigen::Matrix3Xd& points);

// What a residual counts in a robust sum (Huber): 1 for those within some deviations, less
// the farther out.
//
//   lengths   pixels
//
// The deviation is estimated from the median length, so that few bad corners don't move it.
Eigen::ArrayXd robust_weights(const Eigen::ArrayXd& lengths);

// The deviation of one coordinate that the median length of plane residuals tells, at least
// a hundredth of a pixel.
double deviation_from_median(const Eigen::ArrayXd& lengths);

// Where a board stands after a robust fit to all sightings.
//
//   points     3 x N, board frame
//   sightings  at least one
//   start      board -> rig
//
// A start that isn't finite comes back as it is.
rigid_motion fitted_board(const Eigen::Matrix3Xd& points, const std::vector<sighting>& sightings,
                          const rigid_motion& start);

// The root mean square residual of all corners of a board, pixels.
double board_rms(const Eigen::Matrix3Xd& points, const std::vector<sighting>& sightings,
                 const rigid_motion& rig_from_board);

}  // namespace ocpan

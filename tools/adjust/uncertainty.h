#pragma once

#include <cstddef>
#include <vector>

#include <Eigen/Core>

#include "src/camera_details.h"
#include "tools/adjust/adjust_rig.h"

namespace ocpan {

// How uncertain a rig leaves where pixels look, carried from the covariance of its
// increments to first order.

// The standard deviation of where a camera sees fixed directions, over its picture and after
// the best turn of this camera, as compare_rigs compares: the root of the summed variances
// of x and y, pixels.
//
//   pixels   2 x N
//
// N numbers; not-a-number where the lens sees nothing.
Eigen::ArrayXd pixel_uncertainty(const adjusted_rig& fit, const camera_details& details,
                                 std::size_t camera, const Eigen::Matrix2Xd& pixels);

// The standard deviation of the angle between where two cameras see the same directions of
// the rig's frame, far away: the root of the summed variances across the direction, radians.
//
//   directions   3 x N, unit columns, rig's frame
//
// N numbers; not-a-number where one of the cameras can't see the direction.
Eigen::ArrayXd seam_uncertainty(const adjusted_rig& fit, std::size_t camera_a, std::size_t camera_b,
                                const Eigen::Matrix3Xd& directions);

// The standard deviation of a camera's turn against camera 0, after the best turn of both
// over their pictures: the root of the summed variances about the three axes, radians.
double turn_uncertainty(const adjusted_rig& fit, const std::vector<camera_details>& details,
                        std::size_t camera);

}  // namespace ocpan

#pragma once

#include <Eigen/Core>

#include "model/parameters.h"
#include "src/camera_details.h"

namespace ocpan {

// A camera in axes of its own, as other software has cameras: z looks along the axis of the
// lens, about which its bending is round; x runs across it to where the picture's x grows
// while its y stays; y completes a right-handed frame, downward for a picture that isn't
// mirrored.
struct camera_axes {
  Eigen::Matrix3d camera_from_rig;  // p_camera = camera_from_rig (p_rig - centre)
  Eigen::Vector3d centre;           // in the rig's frame, unit of board_scale
  double focal_length = 0;          // pixels, the mean of both directions at the axis
  // Takes (u, v, 1) to a picture's (x, y, 1) but for scale. (u, v), in pixels, is where a
  // round lens before an upright picture with square pixels puts a ray: away from the
  // middle by its radius. The last entry is 1. A plain shift for a centred lens.
  Eigen::Matrix3d pixel_from_plane;
};

// Nothing is lost: a ray at angle theta from z and phi about it, from x to y, lands at
// pixel_from_plane (f r(theta) cos(phi), f r(theta) sin(phi), 1), to rounding. A model
// without scale or looking along its picture gives not-a-number.
[[nodiscard]] camera_axes axes_of(const model_map& model);

// The radius of the circle about the middle of the plane that holds the whole picture,
// pixels; infinity where a corner lies beyond the plane's horizon.
[[nodiscard]] double plane_radius(const camera_axes& axes, const camera_details& details);

}  // namespace ocpan

#pragma once

#include <Eigen/Core>

#include "simulator/rig_description.h"

namespace ocpan {

// The directions in which the pixels of a picture's row look from the camera's centre.
//
// 3 x width, unit columns in the rig's frame; not-a-number where the lens sees nothing,
// which for lens 2 is all beyond the ellipse that touches the picture's sides.
Eigen::Matrix3Xd pixel_rays(const rig_camera& camera, int row);

}  // namespace ocpan

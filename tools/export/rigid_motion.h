#pragma once

#include <Eigen/Core>

#include "tools/export/camera_axes.h"

namespace ocpan {

// p_to = rotation p_from + translation.
struct exported_motion {
  Eigen::Matrix3d rotation;
  Eigen::Vector3d translation;
};

[[nodiscard]] exported_motion camera_from_rig(const camera_axes& axes);
[[nodiscard]] exported_motion rig_from_camera(const camera_axes& axes);

// The axis times the angle, radians, 0 to pi; also of a half turn, as a camera of a new
// model has it.
[[nodiscard]] Eigen::Vector3d rotation_vector(const Eigen::Matrix3d& rotation);

}  // namespace ocpan

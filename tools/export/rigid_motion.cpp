#include "tools/export/rigid_motion.h"

#include <Eigen/Geometry>

namespace ocpan {

exported_motion camera_from_rig(const camera_axes& axes) {
  return {axes.camera_from_rig, -axes.camera_from_rig * axes.centre};
}

exported_motion rig_from_camera(const camera_axes& axes) {
  return {axes.camera_from_rig.transpose(), axes.centre};
}

Eigen::Vector3d rotation_vector(const Eigen::Matrix3d& rotation) {
  const Eigen::AngleAxisd turn(rotation);
  return turn.angle() * turn.axis();
}

}  // namespace ocpan

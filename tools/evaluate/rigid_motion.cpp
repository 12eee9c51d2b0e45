#include "tools/evaluate/rigid_motion.h"

#include <Eigen/Geometry>

#include "model/parameters.h"

namespace ocpan {

rigid_motion rigid_motion::operator*(const rigid_motion& other) const {
  return {rotation * other.rotation, rotation * other.translation + translation};
}

rigid_motion inverse_of(const rigid_motion& motion) {
  return {motion.rotation.transpose(), -(motion.rotation.transpose() * motion.translation)};
}

bool is_finite(const rigid_motion& motion) {
  return motion.rotation.allFinite() && motion.translation.allFinite();
}

rigid_motion changed_about(const rigid_motion& motion, const Eigen::Vector3d& point,
                           const Eigen::Matrix<double, 6, 1>& change) {
  const Eigen::Matrix3d turn = rotation_from_vector(change.head<3>());
  // By way of a quaternion the product stays a rotation over any number of changes.
  const Eigen::Matrix3d rotation =
      Eigen::Quaterniond(turn * motion.rotation).normalized().toRotationMatrix();
  return {rotation, turn * (motion.translation - point) + point + change.tail<3>()};
}

double turn_degrees(const Eigen::Matrix3d& rotation) {
  return Eigen::AngleAxisd(Eigen::Quaterniond(rotation)).angle() * 180 / pi;
}

rigid_motion motion_of(const ModelPose& pose) {
  return {rotation_from_vector(pose.rotation), pose.translation};
}

ModelPose pose_of(const rigid_motion& motion) {
  // Not by vector_from_rotation, which knows some half turns only as no turn.
  const Eigen::AngleAxisd turn((Eigen::Quaterniond(motion.rotation)));
  return {turn.angle() * turn.axis(), motion.translation};
}

}  // namespace ocpan

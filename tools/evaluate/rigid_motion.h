#pragma once

#include <Eigen/Core>

#include "model/pose.h"

namespace ocpan {

// Carries a point x to rotation x + translation.
struct rigid_motion {
  Eigen::Matrix3d rotation = Eigen::Matrix3d::Identity();
  Eigen::Vector3d translation = Eigen::Vector3d::Zero();

  Eigen::Vector3d operator*(const Eigen::Vector3d& point) const {
    return rotation * point + translation;
  }
  Eigen::Matrix3Xd operator*(const Eigen::Matrix3Xd& points) const {
    return (rotation * points).colwise() + translation;
  }
  // First the other motion, then this one.
  rigid_motion operator*(const rigid_motion& other) const;
};

rigid_motion inverse_of(const rigid_motion& motion);

bool is_finite(const rigid_motion& motion);

// The motion followed by a small turn about a point and a small shift.
//
//   change   rotation vector in radians, then shift
rigid_motion changed_about(const rigid_motion& motion, const Eigen::Vector3d& point,
                           const Eigen::Matrix<double, 6, 1>& change);

// How far a rotation turns; exact for small angles too.
double turn_degrees(const Eigen::Matrix3d& rotation);

rigid_motion motion_of(const ModelPose& pose);
ModelPose pose_of(const rigid_motion& motion);

}  // namespace ocpan

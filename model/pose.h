#pragma once

#include <array>

#include <Eigen/Core>

namespace ocpan {

// Where a board stands: board point p is at R p + translation in the rig's frame.
struct ModelPose {
  Eigen::Vector3d rotation = Eigen::Vector3d::Zero();     // rotation vector, radians
  Eigen::Vector3d translation = Eigen::Vector3d::Zero();  // unit of board_scale
};

// Continues the numbers of parameter_name, so that one map of derivatives holds both.
enum pose_param_name : int { R_0 = 18, R_1, R_2, T_0, T_1, T_2 };

// The rotation matrix of a rotation vector (Rodrigues' formula).
Eigen::Matrix3d rotation_from_vector(const Eigen::Vector3d& v);

// The derivatives of rotation_from_vector by the three components of v.
std::array<Eigen::Matrix3d, 3> rotation_derivatives(const Eigen::Vector3d& v);

// The rotation vector of a rotation matrix. At a half turn the axis comes from the
// diagonal and its signs from the first column, so a half turn about y or z, where these
// are 0, comes back as the zero vector; calibrations depend on it. A trace that rounding
// carries above 3 has no angle and counts as a short turn.
Eigen::Vector3d vector_from_rotation(const Eigen::Matrix3d& r);

}  // namespace ocpan

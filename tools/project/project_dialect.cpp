#include "tools/project/project_dialect.h"

#include <cmath>

#include <Eigen/LU>

namespace ocpan {
namespace {

Eigen::Matrix3d roll_matrix(double angle) {
  const double s = std::sin(angle), c = std::cos(angle);
  return (Eigen::Matrix3d() << c, s, 0, -s, c, 0, 0, 0, 1).finished();
}

Eigen::Matrix3d pitch_matrix(double angle) {
  const double s = std::sin(angle), c = std::cos(angle);
  return (Eigen::Matrix3d() << 1, 0, 0, 0, c, s, 0, -s, c).finished();
}

Eigen::Matrix3d yaw_matrix(double angle) {
  const double s = std::sin(angle), c = std::cos(angle);
  return (Eigen::Matrix3d() << c, 0, -s, 0, 1, 0, s, 0, c).finished();
}

}  // namespace

project_angles dialect_angles(const project_angles& tool) {
  const Eigen::Matrix3d wanted =
      yaw_matrix(tool.yaw) * pitch_matrix(-tool.pitch) * roll_matrix(tool.roll);
  project_angles angles;
  angles.yaw = std::atan2(wanted(2, 0), wanted(2, 2));
  const Eigen::Matrix3d rest = wanted * yaw_matrix(-angles.yaw);  // roll times pitch
  angles.roll = std::atan2(-rest(1, 0), rest(0, 0));
  angles.pitch = std::atan2(-rest(2, 1), rest(2, 2));
  return angles;
}

Eigen::Vector2d dialect_shear(const Eigen::Vector2d& tool, const Eigen::Vector2d& size) {
  return {tool[1] * size[1] / size[0], tool[0] * size[0] / size[1]};
}

Eigen::Vector2d dialect_shift(const Eigen::Vector2d& tool, const Eigen::Vector2d& shear,
                              const Eigen::Vector2d& size, const Eigen::Vector2d& offset) {
  if (offset.isZero(0) || shear.isZero(0)) return tool;
  Eigen::Matrix2d sheared;
  sheared << 1, shear[0] / size[1], shear[1] / size[0], 1;
  return tool + sheared.inverse() * offset - offset;
}

}  // namespace ocpan

#include "tools/export/camera_axes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Geometry>
#include <Eigen/LU>

namespace ocpan {

// The model takes a ray to q = O + r(theta) e, e being the unit direction across O, and q to
// the picture by the rows H, V and A. In the camera's axes q is (r cos, r sin, 1).
camera_axes axes_of(const model_map& model) {
  Eigen::Matrix3d picture_from_rig;
  picture_from_rig.row(0) = vector_of(model, H_0);
  picture_from_rig.row(1) = vector_of(model, V_0);
  picture_from_rig.row(2) = direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
  const Eigen::Vector3d z = direction_from_angles(value_of(model, O_th), value_of(model, O_ph));

  const Eigen::Vector3d middle = picture_from_rig * z;  // of the picture, but for scale
  const Eigen::Vector3d y_grows =
      picture_from_rig.row(1) - middle.y() / middle.z() * picture_from_rig.row(2);
  const Eigen::Vector3d x_grows =
      picture_from_rig.row(0) - middle.x() / middle.z() * picture_from_rig.row(2);
  Eigen::Vector3d x = y_grows.cross(z).normalized();
  if (x.dot(x_grows) * middle.z() < 0) x = -x;

  camera_axes axes;
  axes.camera_from_rig.row(0) = x;
  axes.camera_from_rig.row(1) = z.cross(x);
  axes.camera_from_rig.row(2) = z;
  axes.centre = vector_of(model, C_0);
  const Eigen::Matrix3d picture = picture_from_rig * axes.camera_from_rig.transpose() / middle.z();
  const double along_x = picture(0, 0) - picture(0, 2) * picture(2, 0);
  const double along_y = picture(1, 1) - picture(1, 2) * picture(2, 1);
  axes.focal_length = std::sqrt(std::abs(along_x * along_y));
  axes.pixel_from_plane = picture;
  axes.pixel_from_plane.leftCols<2>() /= axes.focal_length;
  return axes;
}

double plane_radius(const camera_axes& axes, const camera_details& details) {
  const Eigen::Matrix3d plane_from_pixel = axes.pixel_from_plane.inverse();
  double radius = 0;
  for (const double x : {-0.5, details.width - 0.5}) {
    for (const double y : {-0.5, details.height - 0.5}) {
      const Eigen::Vector3d corner = plane_from_pixel * Eigen::Vector3d(x, y, 1);
      if (!(corner.z() > 0)) return std::numeric_limits<double>::infinity();
      radius = std::max(radius, corner.head<2>().norm() / corner.z());
    }
  }
  return radius;
}

}  // namespace ocpan

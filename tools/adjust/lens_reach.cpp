#include "tools/adjust/lens_reach.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Geometry>

#include "model/camera_frame.h"

namespace ocpan {

bool lens_reaches(const model_map& lens, const Eigen::Vector2d& pixel) {
  const Eigen::Vector3d axis = direction_from_angles(value_of(lens, A_th), value_of(lens, A_ph));
  const Eigen::Vector3d o = direction_from_angles(value_of(lens, O_th), value_of(lens, O_ph));
  const Eigen::Vector3d h = vector_of(lens, H_0), v = vector_of(lens, V_0);
  const Eigen::Vector3d ray =
      (v - pixel.y() * axis).cross(h - pixel.x() * axis) / axis.dot(v.cross(h));
  const double along = ray.dot(o);
  const double radius = (ray - along * o).norm() / along;
  const double r0 = value_of(lens, rho_0), r1 = value_of(lens, rho_1), r2 = value_of(lens, rho_2);
  double chi = monotonic_limit(r0, r1, r2);
  const double law = value_of(lens, L);
  if (law < 0) chi = std::min(chi, -1 / law);
  return along > 0 && radius <= (1 + r0) * chi + r1 * std::pow(chi, 3) + r2 * std::pow(chi, 5);
}

}  // namespace ocpan

#include "model/camera_frame.h"

#include <algorithm>
#include <cmath>

namespace ocpan {

camera_frame::camera_frame(const model_map& model)
    : centre(vector_of(model, C_0)),
      horizontal(vector_of(model, H_0)),
      vertical(vector_of(model, V_0)),
      r0(value_of(model, rho_0)),
      r1(value_of(model, rho_1)),
      r2(value_of(model, rho_2)),
      chi_limit(monotonic_limit(r0, r1, r2)),
      law(value_of(model, L)) {
  const double a_th = value_of(model, A_th), a_ph = value_of(model, A_ph);
  axis = direction_from_angles(a_th, a_ph);
  axis_by = {direction_d_th(a_th, a_ph), direction_d_ph(a_th, a_ph)};
  const double o_th = value_of(model, O_th), o_ph = value_of(model, O_ph);
  distortion_axis = direction_from_angles(o_th, o_ph);
  distortion_axis_by = {direction_d_th(o_th, o_ph), direction_d_ph(o_th, o_ph)};
}

double monotonic_limit(double r0, double r1, double r2) {
  double limit = 1e12;
  if (std::abs(r1) * 1e-12 > std::abs(r2)) {  // the quintic term is negligible
    const double q = (1 + r0) / (-3 * r1);
    if (std::abs(r1) > 1e-12 && q > 0) limit = std::sqrt(q);
    return limit;
  }
  const double discriminant = 9 * r1 * r1 - 20 * r2 * (1 + r0);
  if (!(discriminant > 0)) return limit;
  const double s = std::sqrt(discriminant);
  const double t1 = (s - 3 * r1) / (10 * r2);
  const double t2 = (-3 * r1 - s) / (10 * r2);
  if (t1 > 0) limit = std::sqrt(t1);
  if (t2 > 0) limit = std::min(limit, std::sqrt(t2));
  return limit;
}

}  // namespace ocpan

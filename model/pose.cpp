#include "model/pose.h"

#include <cmath>

#include "model/parameters.h"

namespace ocpan {
namespace {

constexpr double short_angle = 1e-8;  // radians; below it the series' first terms stand

Eigen::Matrix3d skew(const Eigen::Vector3d& v) {
  Eigen::Matrix3d k;
  k << 0, -v.z(), v.y(),  //
      v.z(), 0, -v.x(),   //
      -v.y(), v.x(), 0;
  return k;
}

double sign(double x) { return x > 0 ? 1.0 : x < 0 ? -1.0 : 0.0; }

}  // namespace

Eigen::Matrix3d rotation_from_vector(const Eigen::Vector3d& v) {
  const double a = v.norm();
  const double s = a > short_angle ? std::sin(a) / a : 1.0;
  const double q = a > short_angle ? (1 - std::cos(a)) / (a * a) : 0.5;
  const Eigen::Matrix3d k = skew(v);
  return Eigen::Matrix3d::Identity() + s * k + q * (k * k);
}

std::array<Eigen::Matrix3d, 3> rotation_derivatives(const Eigen::Vector3d& v) {
  const double a = v.norm();
  const Eigen::Matrix3d k = skew(v);
  const Eigen::Matrix3d kk = k * k;
  double s = 1.0, q = 0.5, ds = 0.0, dq = 0.0;  // ds, dq by a
  if (a > short_angle) {
    s = std::sin(a) / a;
    q = (1 - std::cos(a)) / (a * a);
    ds = (std::cos(a) - s) / a;
    dq = (s - 2 * q) / a;
  }
  std::array<Eigen::Matrix3d, 3> derivatives;
  for (int i = 0; i < 3; ++i) {
    const Eigen::Matrix3d e = skew(Eigen::Vector3d::Unit(i));
    const double da = a > short_angle ? v[i] / a : 0.0;
    derivatives[static_cast<std::size_t>(i)] =
        s * e + q * (e * k + k * e) + (ds * da) * k + (dq * da) * kk;
  }
  return derivatives;
}

Eigen::Vector3d vector_from_rotation(const Eigen::Matrix3d& r) {
  const double a = std::acos((r(0, 0) + r(1, 1) + r(2, 2) - 1) * 0.5);
  if (std::abs(a - pi) < short_angle) {
    const double s = r(2, 1) - r(1, 2) >= 0 ? a : -a;
    return {std::sqrt((r(0, 0) + 1) * 0.5) * s, std::sqrt((r(1, 1) + 1) * 0.5) * s * sign(r(1, 0)),
            std::sqrt((r(2, 2) + 1) * 0.5) * s * sign(r(2, 0))};
  }
  const double k = a > short_angle ? a * 0.5 / std::sin(a) : 0.5;
  return k * Eigen::Vector3d(r(2, 1) - r(1, 2), r(0, 2) - r(2, 0), r(1, 0) - r(0, 1));
}

}  // namespace ocpan

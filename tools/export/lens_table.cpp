#include "tools/export/lens_table.h"

#include <algorithm>
#include <cmath>

#include "model/projection.h"

namespace ocpan {
namespace {

constexpr double step_degrees = 0.25;
constexpr double radians = 3.14159265358979323846 / 180;

// The lens before a picture plane of its own: at the origin, looking along z, unit scale.
model_map plain_lens(const model_map& model) {
  model_map plain{{H_0, 1.0}, {V_1, 1.0}};
  for (const parameter_name key : {rho_0, rho_1, rho_2, L}) plain[key] = value_of(model, key);
  return plain;
}

// The radius of each angle.
Eigen::ArrayXd radii(const model_map& lens, const Eigen::ArrayXd& angle_degrees) {
  Eigen::Matrix3Xd rays = Eigen::Matrix3Xd::Zero(3, angle_degrees.size());
  rays.row(0) = (angle_degrees * radians).sin();
  rays.row(2) = (angle_degrees * radians).cos();
  Eigen::ArrayXd x, y;
  const Eigen::Vector3d none = Eigen::Vector3d::Zero();
  project_points(x, y, rays, lens, none, none);
  return (angle_degrees == 0).select(0, x);  // the axis itself has no direction across it
}

// How many rows lie below the angle at which the law ends: at a rectilinear lens's right
// angle the radius is infinite, and a fisheye's sine has its summit.
Eigen::Index most_rows(double law) {
  const double reach_degrees = law == 0 ? 180 : std::min(180.0, 90 / std::abs(law));
  const auto rows = static_cast<Eigen::Index>(std::floor(reach_degrees / step_degrees)) + 1;
  const bool ends_at_infinity =
      law > 0 && static_cast<double>(rows - 1) * step_degrees >= reach_degrees;
  return ends_at_infinity ? rows - 1 : rows;
}

}  // namespace

lens_table sample_lens(const model_map& model, double largest_radius) {
  const model_map lens = plain_lens(model);
  const Eigen::Index most = most_rows(value_of(model, L));
  const Eigen::ArrayXd angle =
      Eigen::ArrayXd::LinSpaced(most, 0, static_cast<double>(most - 1) * step_degrees);
  const Eigen::ArrayXd radius = radii(lens, angle);
  const auto reaching =
      std::find_if(radius.begin(), radius.end(), [&](double r) { return !(r < largest_radius); });
  const Eigen::Index rows = std::min<Eigen::Index>(most, reaching - radius.begin() + 1);

  lens_table table;
  table.angle_degrees.assign(angle.begin(), angle.begin() + rows);
  table.radius.assign(radius.begin(), radius.begin() + rows);
  if (rows < 2) return table;
  const Eigen::ArrayXd between = radii(lens, angle.head(rows - 1) + step_degrees / 2);
  const Eigen::ArrayXd straight = (radius.head(rows - 1) + radius.segment(1, rows - 1)) / 2;
  table.interpolation_error = (between - straight).abs().maxCoeff();
  return table;
}

}  // namespace ocpan

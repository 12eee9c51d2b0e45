#include "simulator/fixture_pattern.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>

#include "model/projection.h"

namespace ocpan {
namespace {

double degrees(double radians) { return radians * 180 / pi; }
double radians(double in_degrees) { return in_degrees * pi / 180; }

Eigen::Vector3d axis_of(const model_map& model) {
  return direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
}

// The direction that stands across all axes as well as can be, upwards.
Eigen::Vector3d across(const rig_description& description) {
  Eigen::Matrix3d spread = Eigen::Matrix3d::Zero();
  for (const rig_camera& camera : description.cameras) {
    spread += axis_of(camera.model) * axis_of(camera.model).transpose();
  }
  if (description.cameras.size() == 1) return Eigen::Vector3d::UnitY();
  const Eigen::Vector3d pole =
      Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(spread).eigenvectors().col(0);
  return pole.y() < 0 ? Eigen::Vector3d(-pole) : pole;
}

bool back_to_back(const rig_description& description) {
  if (description.cameras.size() != 2) return false;
  return axis_of(description.cameras[0].model).dot(axis_of(description.cameras[1].model)) < -0.9;
}

}  // namespace

fixture_description suitable_fixture(const rig_description& description) {
  fixture_description fixture;
  fixture.seed = description.seed;
  if (back_to_back(description)) {
    fixture.pole = axis_of(description.cameras[0].model);
  } else {
    fixture.pole = across(description);
    if (description.cameras.size() > 2) fixture.low_latitude_degrees = 0;
  }
  return fixture;
}

pattern_map::pattern_map(const fixture_description& fixture)
    : rig_from_pattern_(Eigen::Quaterniond::FromTwoVectors(Eigen::Vector3d::UnitZ(), fixture.pole)
                            .toRotationMatrix()),
      meridians_(2 * std::max(1, static_cast<int>(std::lround(180 / fixture.cell_degrees)))),
      degrees_per_line_(360.0 / meridians_),
      low_line_(static_cast<int>(std::lround(fixture.low_latitude_degrees / degrees_per_line_))),
      high_line_(static_cast<int>(std::lround(fixture.high_latitude_degrees / degrees_per_line_))) {
}

Eigen::Vector2d pattern_map::cell_position(const Eigen::Vector3d& point) const {
  const Eigen::Vector3d p = rig_from_pattern_.transpose() * point;
  const double longitude = degrees(std::atan2(p.y(), p.x()));
  const double latitude = degrees(std::atan2(p.z(), std::hypot(p.x(), p.y())));
  return {(longitude < 0 ? longitude + 360 : longitude) / degrees_per_line_,
          latitude / degrees_per_line_};
}

Eigen::Vector3d pattern_map::direction(double u, double v) const {
  const double longitude = radians(u * degrees_per_line_);
  const double latitude = radians(v * degrees_per_line_);
  return rig_from_pattern_ * Eigen::Vector3d(std::cos(latitude) * std::cos(longitude),
                                             std::cos(latitude) * std::sin(longitude),
                                             std::sin(latitude));
}

Eigen::Matrix3Xd seen_on_sphere(const model_map& model, const Eigen::Matrix2Xd& pixels,
                                double radius_mm) {
  Eigen::Matrix3Xd points;
  unproject_points(points, pixels, model);
  const Eigen::Vector3d centre = vector_of(model, C_0);
  for (auto ray : points.colwise()) {
    const double b = centre.dot(ray);
    const double t = -b + std::sqrt(b * b + radius_mm * radius_mm - centre.squaredNorm());
    ray = (centre + t * ray).eval();
  }
  return points;
}

}  // namespace ocpan

#include "tools/verify/polygon_check.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <Eigen/Geometry>

namespace ocpan {
namespace {

using Eigen::Vector3d;

constexpr double degree = 3.141592653589793 / 180;

// How often the polygon runs around a direction, clockwise as seen from the rig.
double turns_around(const device_polygon& polygon, const Vector3d& middle) {
  double sum = 0;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const Vector3d& from = polygon[i];
    const Vector3d& to = polygon[(i + 1) % polygon.size()];
    sum += std::atan2(middle.dot(from.cross(to)), from.dot(to) - middle.dot(from) * middle.dot(to));
  }
  return sum / (360 * degree);
}

// Whether the shorter arcs a b and c d cross: seen around, their ends alternate.
bool arcs_cross(const Vector3d& a, const Vector3d& b, const Vector3d& across_ab, const Vector3d& c,
                const Vector3d& d, const Vector3d& across_cd) {
  const double c_side = across_ab.dot(c), d_side = across_ab.dot(d);
  const double a_side = across_cd.dot(a), b_side = across_cd.dot(b);
  return c_side * d_side < 0 && a_side * b_side < 0 && c_side * b_side > 0;
}

double angle_between(const Vector3d& one, const Vector3d& other) {
  return std::atan2(one.cross(other).norm(), one.dot(other));
}

// The angle from a direction to an arc, radians.
double angle_to_arc(const Vector3d& direction, const Vector3d& from, const Vector3d& to) {
  const Vector3d across = from.cross(to);
  const bool beside = across.cross(from).dot(direction) > 0 && to.cross(across).dot(direction) > 0;
  if (!beside || across.isZero()) {
    return std::min(angle_between(direction, from), angle_between(direction, to));
  }
  return std::abs(std::asin(std::clamp(across.normalized().dot(direction), -1.0, 1.0)));
}

// A direction that is no sample's, near the middle of the camera's weights.
Vector3d middle_of(const std::vector<cube_sample>& samples, const camera_reach& camera) {
  Vector3d sum = Vector3d::Zero();
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (camera.weight[i]) sum += samples[i].solid_angle * samples[i].direction;
  }
  return (sum.normalized() + Vector3d(1.1e-5, 1.7e-5, 2.3e-5)).normalized();
}

}  // namespace

polygon_comparison compare_polygon(const device_polygon& polygon,
                                   const std::vector<cube_sample>& samples,
                                   const camera_reach& camera) {
  polygon_comparison compared;
  compared.is_outline = std::all_of(polygon.begin(), polygon.end(), [](const Vector3d& vertex) {
    return std::abs(vertex.norm() - 1) < 1e-6;
  });
  if (!compared.is_outline) return compared;
  if (std::none_of(camera.weight.begin(), camera.weight.end(), [](auto w) { return w != 0; })) {
    return compared;
  }
  const Vector3d middle = middle_of(samples, camera);
  compared.holds_middle = turns_around(polygon, middle) > 0.5;
  std::vector<Vector3d> across;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    across.push_back(polygon[i].cross(polygon[(i + 1) % polygon.size()]));
  }
  for (std::size_t sample = 0; sample < samples.size(); ++sample) {
    if (!camera.weight[sample]) continue;
    const Vector3d& direction = samples[sample].direction;
    const Vector3d way = middle.cross(direction);
    bool inside = compared.holds_middle;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      const Vector3d& to = polygon[(i + 1) % polygon.size()];
      if (arcs_cross(middle, direction, way, polygon[i], to, across[i])) inside = !inside;
    }
    if (inside) continue;
    compared.outside += samples[sample].solid_angle;
    double nearest = 180 * degree;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      nearest =
          std::min(nearest, angle_to_arc(direction, polygon[i], polygon[(i + 1) % polygon.size()]));
    }
    compared.farthest_degrees = std::max(compared.farthest_degrees, nearest / degree);
  }
  return compared;
}

}  // namespace ocpan

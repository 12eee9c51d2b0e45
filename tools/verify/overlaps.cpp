#include "tools/verify/overlaps.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <Eigen/Geometry>

namespace ocpan {
namespace {

constexpr double degree = 3.141592653589793 / 180;
constexpr std::size_t pieces = 36;  // of the seam's circle
constexpr double between = 1.05;    // a way by a third camera that is no longer than this

// The middle of what a camera covers; zero if it covers nothing, or the whole sphere.
Eigen::Vector3d middle_of(const std::vector<cube_sample>& samples, const camera_reach& camera) {
  Eigen::Vector3d sum = Eigen::Vector3d::Zero();
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (camera.weight[i]) sum += samples[i].solid_angle * samples[i].direction;
  }
  constexpr double least = 1e-6;
  return sum.norm() < least ? Eigen::Vector3d::Zero() : sum.normalized();
}

double angle_between(const Eigen::Vector3d& one, const Eigen::Vector3d& other) {
  return std::atan2(one.cross(other).norm(), one.dot(other));
}

bool are_neighbours(std::size_t first, std::size_t second,
                    const std::vector<Eigen::Vector3d>& middles) {
  if (middles[first].isZero() || middles[second].isZero()) return false;
  const double direct = angle_between(middles[first], middles[second]);
  for (std::size_t third = 0; third < middles.size(); ++third) {
    if (third == first || third == second || middles[third].isZero()) continue;
    const double around = angle_between(middles[first], middles[third]) +
                          angle_between(middles[third], middles[second]);
    if (around <= between * direct) return false;
  }
  return true;
}

// The width of the overlap in each piece of the seam, radians: the overlap's area as if
// unrolled from the circle of the seam, by the piece's length.
std::array<double, pieces> widths_along(const std::vector<cube_sample>& samples,
                                        const camera_reach& first, const camera_reach& second,
                                        const Eigen::Vector3d& across) {
  Eigen::Vector3d along = across.unitOrthogonal();
  if (std::abs(across.y()) < 0.9) along = across.cross(Eigen::Vector3d::UnitY()).normalized();
  const Eigen::Vector3d upward = along.cross(across);
  std::array<double, pieces> widths{};
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (!first.weight[i] || !second.weight[i]) continue;
    const Eigen::Vector3d& direction = samples[i].direction;
    const double turn = std::atan2(direction.dot(upward), direction.dot(along)) / degree + 180;
    const auto piece = std::min(static_cast<std::size_t>(turn * pieces / 360), pieces - 1);
    const double off = direction.dot(across);
    widths[piece] += samples[i].solid_angle / std::sqrt(std::max(1 - off * off, 1e-6));
  }
  for (double& width : widths) width /= 360 * degree / pieces;
  return widths;
}

void measure_widths(camera_overlap& overlap, const std::array<double, pieces>& widths) {
  std::vector<double> whole, all;
  for (std::size_t i = 0; i < pieces; ++i) {
    if (widths[i] <= 0) continue;
    all.push_back(widths[i]);
    if (widths[(i + 1) % pieces] > 0 && widths[(i + pieces - 1) % pieces] > 0) {
      whole.push_back(widths[i]);
    }
  }
  if (whole.empty()) whole = all;
  if (whole.empty()) return;
  std::sort(whole.begin(), whole.end());
  overlap.width_degrees = whole[whole.size() / 2] / degree;
  overlap.narrowest_degrees = whole.front() / degree;
}

}  // namespace

std::vector<camera_overlap> overlaps_of(const std::vector<cube_sample>& samples,
                                        const std::vector<camera_reach>& cameras) {
  std::vector<Eigen::Vector3d> middles;
  for (const camera_reach& camera : cameras) middles.push_back(middle_of(samples, camera));
  std::vector<camera_overlap> overlaps;
  for (std::size_t first = 0; first < cameras.size(); ++first) {
    for (std::size_t second = first + 1; second < cameras.size(); ++second) {
      if (!are_neighbours(first, second, middles)) continue;
      camera_overlap& overlap = overlaps.emplace_back();
      overlap.first = first;
      overlap.second = second;
      for (std::size_t i = 0; i < samples.size(); ++i) {
        if (cameras[first].weight[i] && cameras[second].weight[i]) {
          overlap.solid_angle += samples[i].solid_angle;
        }
      }
      const Eigen::Vector3d across = (middles[second] - middles[first]).normalized();
      measure_widths(overlap, widths_along(samples, cameras[first], cameras[second], across));
    }
  }
  return overlaps;
}

}  // namespace ocpan

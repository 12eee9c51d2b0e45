#include "tools/report/camera_outline.h"

#include <algorithm>

#include "model/projection.h"

namespace ocpan {
namespace {

Eigen::Vector3d ray_of(const model_map& model, const Eigen::Vector2d& pixel) {
  Eigen::Matrix3Xd rays;
  unproject_points(rays, pixel, model);
  return rays.col(0);
}

// The ray of a pixel or, where there is none, of the last towards it from the middle.
Eigen::Vector3d farthest_ray(const model_map& model, const Eigen::Vector2d& middle,
                             const Eigen::Vector2d& pixel) {
  Eigen::Vector3d best = ray_of(model, pixel);
  if (best.allFinite()) return best;
  double low = 0, high = 1;
  for (int i = 0; i < 12; ++i) {
    const double share = (low + high) / 2;
    const Eigen::Vector3d ray = ray_of(model, middle + share * (pixel - middle));
    (ray.allFinite() ? low : high) = share;
    if (ray.allFinite()) best = ray;
  }
  return best;
}

}  // namespace

camera_outline outline_of(const model_map& model, const camera_details& details, double reach) {
  constexpr int parts = 12;  // the picture in each direction
  const double width = details.width, height = details.height;
  // A little off the middle itself, where a ray on the distortion axis has no direction.
  const Eigen::Vector2d middle(width / 2 - 0.49, height / 2 - 0.49);
  camera_outline outline;
  outline.centre = vector_of(model, C_0);
  for (int i = 0; i <= parts; ++i) {
    for (int k = 0; k <= parts; ++k) {
      const Eigen::Vector2d pixel(width * i / parts - 0.5, height * k / parts - 0.5);
      const bool within = i > 0 && i < parts && k > 0 && k < parts;
      const Eigen::Vector3d ray =
          within ? ray_of(model, pixel) : farthest_ray(model, middle, pixel);
      if (ray.allFinite()) outline.ends.push_back(outline.centre + reach * ray);
    }
  }
  const Eigen::Vector3d ahead = ray_of(model, middle);
  outline.ahead =
      outline.centre + 1.15 * reach * (ahead.allFinite() ? ahead : Eigen::Vector3d(0, 0, -1));
  return outline;
}

// By Andrew's monotone chain.
polygon hull_of(const polygon& points) {
  polygon sorted = points, hull;
  std::sort(sorted.begin(), sorted.end(), [](const Eigen::Vector2d& a, const Eigen::Vector2d& b) {
    return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
  });
  const auto turns_left = [](const Eigen::Vector2d& a, const Eigen::Vector2d& b,
                             const Eigen::Vector2d& c) {
    return (b - a).x() * (c - a).y() - (b - a).y() * (c - a).x() > 0;
  };
  const auto walk = [&](auto begin, auto end) {
    const std::size_t start = hull.size();
    for (auto it = begin; it != end; ++it) {
      while (hull.size() >= start + 2 && !turns_left(hull[hull.size() - 2], hull.back(), *it)) {
        hull.pop_back();
      }
      hull.push_back(*it);
    }
    if (!hull.empty()) hull.pop_back();  // the other walk begins with it
  };
  walk(sorted.begin(), sorted.end());
  walk(sorted.rbegin(), sorted.rend());
  return hull;
}

}  // namespace ocpan

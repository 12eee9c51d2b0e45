#include "tools/verify/picture_reach.h"

#include "tables/lut_format.h"

namespace ocpan {
namespace {

// The pixel's direction starts at the camera, the sample's at the rig's middle: with the
// smallest radius they may differ by so much.
constexpr double same_way = 0.8;  // cosine

struct picture_shape {
  int width, height;
  bool round;

  bool holds(double x, double y) const {
    if (!(x > -1.0 && x < width && y > -1.0 && y < height)) return false;
    const double across = (x + 0.5) / width * 2 - 1, down = (y + 0.5) / height * 2 - 1;
    return !round || across * across + down * down <= 1;
  }
};

}  // namespace

std::vector<std::uint8_t> weights_of(const std::vector<std::uint64_t>& entries,
                                     const std::vector<point_block>& positions,
                                     const std::vector<cube_sample>& samples) {
  std::vector<std::uint8_t> weights(samples.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const cube_sample& at = samples[i];
    const bool has_position =
        positions[at.face][at.a].row(static_cast<Eigen::Index>(at.b)).allFinite();
    const std::size_t b = has_position ? at.b : at.b + 1;
    weights[i] = (entries[lut_index(at.face, at.a, b)] & 1023) != 0;
  }
  return weights;
}

std::vector<std::uint8_t> seen_by(const cal& calibration, std::size_t camera,
                                  const std::vector<point_block>& positions,
                                  const std::vector<cube_sample>& samples, bool project_file) {
  const picture_shape shape{calibration.cam_width(camera), calibration.cam_height(camera),
                            !project_file && calibration.cam_lens(camera) == 2};
  std::vector<std::size_t> inside;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const cube_sample& at = samples[i];
    const auto row = positions[at.face][at.a].row(static_cast<Eigen::Index>(at.b));
    if (shape.holds(row[0], row[1])) inside.push_back(i);
  }
  Eigen::MatrixX2d pixels(inside.size(), 2);
  for (std::size_t i = 0; i < inside.size(); ++i) {
    const cube_sample& at = samples[inside[i]];
    pixels.row(static_cast<Eigen::Index>(i)) =
        positions[at.face][at.a].row(static_cast<Eigen::Index>(at.b));
  }
  Eigen::MatrixX3d rays;
  // The camera is one of the calibration's.
  static_cast<void>(calibration.cam_unproject(rays, pixels, camera));
  std::vector<std::uint8_t> seen(samples.size(), 0);
  for (std::size_t i = 0; i < inside.size(); ++i) {
    const Eigen::Vector3d ray = rays.row(static_cast<Eigen::Index>(i));
    seen[inside[i]] = ray.normalized().dot(samples[inside[i]].direction) > same_way;
  }
  return seen;
}

}  // namespace ocpan

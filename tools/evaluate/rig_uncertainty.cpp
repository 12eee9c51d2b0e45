#include "tools/evaluate/rig_uncertainty.h"

#include <cmath>

#include "model/projection.h"
#include "tools/adjust/uncertainty.h"

namespace ocpan {
namespace {

constexpr int grid_points = 17;  // along each side of the picture

Eigen::Matrix2Xd picture_grid(const camera_details& camera) {
  Eigen::Matrix2Xd pixels(2, grid_points * grid_points);
  for (int k = 0; k < pixels.cols(); ++k) {
    pixels.col(k) << (camera.width - 1.0) * (k % grid_points) / (grid_points - 1),
        (camera.height - 1.0) * (k / grid_points) / (grid_points - 1);
  }
  return pixels;
}

// Root mean square and maximum of the finite ones of some numbers.
struct number_range {
  double rms = 0;
  double maximum = 0;
  int count = 0;
};

number_range range_of(const Eigen::ArrayXd& numbers) {
  number_range range;
  for (const double number : numbers) {
    if (!std::isfinite(number)) continue;
    range.rms += number * number;
    range.maximum = std::max(range.maximum, number);
    ++range.count;
  }
  if (range.count > 0) range.rms = std::sqrt(range.rms / range.count);
  return range;
}

// Whether a pixel lies in the picture of a camera.
bool is_inside(double x, double y, const camera_details& camera) {
  return x >= 0 && y >= 0 && x <= camera.width - 1 && y <= camera.height - 1;
}

// The directions of a camera's picture that fall into another one's too.
Eigen::Matrix3Xd shared_directions(const rig& models, const std::vector<camera_details>& details,
                                   std::size_t first, std::size_t second) {
  Eigen::Matrix3Xd rays;
  unproject_points(rays, picture_grid(details[first]), models[first]);
  Eigen::ArrayXd x, y;
  project_points(x, y, rays, models[second], Eigen::Vector3d::Zero(),
                 vector_of(models[second], C_0));
  // Beyond its field of view a lens may fold a direction back into the picture.
  Eigen::Matrix2Xd pixels(2, rays.cols());
  pixels << x.matrix().transpose(), y.matrix().transpose();
  Eigen::Matrix3Xd back;
  unproject_points(back, pixels, models[second]);
  constexpr double same = 1e-4;
  Eigen::Index kept = 0;
  for (Eigen::Index k = 0; k < rays.cols(); ++k) {
    if (!is_inside(x(k), y(k), details[second])) continue;
    if (!((back.col(k) - rays.col(k)).norm() < same)) continue;
    rays.col(kept++) = rays.col(k).eval();
  }
  return rays.leftCols(kept);
}

}  // namespace

rig_uncertainty uncertainty_of(const adjusted_rig& fit, const std::vector<camera_details>& details,
                               const std::vector<evaluated_pair>& pairs) {
  rig_uncertainty result;
  result.corner_pixels = fit.sigma;
  for (std::size_t c = 0; c < details.size(); ++c) {
    const number_range range =
        range_of(pixel_uncertainty(fit, details[c], c, picture_grid(details[c])));
    result.cameras.push_back({range.rms, range.maximum});
  }
  for (const evaluated_pair& pair : pairs) {
    const Eigen::Matrix3Xd directions =
        shared_directions(fit.models, details, pair.first, pair.second);
    const number_range range = range_of(seam_uncertainty(fit, pair.first, pair.second, directions));
    pair_uncertainty& seam = result.pairs.emplace_back();
    seam.first = pair.first;
    seam.second = pair.second;
    if (range.count > 0) seam.seam_degrees = range.rms * 180 / pi;
  }
  return result;
}

std::vector<seen_board> used_boards(const evaluation& found,
                                    const std::vector<seen_board>& boards) {
  std::vector<seen_board> used;
  for (std::size_t b = 0; b < boards.size(); ++b) {
    if (found.boards[b].fate == board_fate::used) used.push_back(boards[b]);
  }
  return used;
}

}  // namespace ocpan

#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <Eigen/Core>
#include <opencv2/core.hpp>

namespace ocpan {

// Gradient directions over half a turn.
inline constexpr std::size_t orientation_bins = 32;
using orientations = std::array<double, orientation_bins>;

// The gradient magnitudes of the pixels around (x, y), rows and columns from
// trunc(x - 10) up to but not including trunc(x + 10), sorted by direction: each is shared
// linearly between the two bins nearest to its angle, and bin 0 follows bin 31.
//
//   magnitude, angle   of the gradient, angle in radians, 0 or above
//   x, y               pixels; nothing is counted outside the picture
orientations orientation_histogram(const cv::Mat1d& magnitude, const cv::Mat1d& angle, double x,
                                   double y);

// The histogram convolved, round the circle, with the standard normal density at whole bins.
orientations smoothed(const orientations& histogram);

// A bin above both its neighbours, and its direction.
struct orientation_peak {
  Eigen::Vector2d direction;
  double value;
};
// The strongest first, the lower bin first among equals.
std::vector<orientation_peak> orientation_peaks(const orientations& histogram);

}  // namespace ocpan

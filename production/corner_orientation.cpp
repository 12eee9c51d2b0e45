#include "production/corner_orientation.h"

#include <algorithm>
#include <cmath>

#include "model/parameters.h"
#include "production/pixel_range.h"

namespace ocpan {
namespace {

constexpr double reach = 10.0;  // pixels

// The normal density at whole bins round the circle, by the difference of two bins.
orientations normal_density() {
  orientations density;
  for (std::size_t bin = 0; bin < orientation_bins; ++bin) {
    const double distance = static_cast<double>(std::min(bin, orientation_bins - bin));
    density[bin] = std::exp(-distance * distance / 2) / std::sqrt(2 * pi);
  }
  return density;
}

}  // namespace

orientations orientation_histogram(const cv::Mat1d& magnitude, const cv::Mat1d& angle, double x,
                                   double y) {
  constexpr double bins = orientation_bins;
  const int first_column = pixel_bound(x - reach, magnitude.cols);
  const int end_column = pixel_bound(x + reach, magnitude.cols);
  const int end_row = pixel_bound(y + reach, magnitude.rows);
  orientations histogram{};
  for (int row = pixel_bound(y - reach, magnitude.rows); row < end_row; ++row) {
    for (int column = first_column; column < end_column; ++column) {
      const double m = magnitude(row, column);
      const double turned = angle(row, column) * bins / pi;
      const double p = turned < bins ? turned : std::fmod(turned, bins);
      const double lower = std::trunc(p);
      const std::size_t bin = static_cast<std::size_t>(lower);
      histogram[bin] += m * (1 - (p - lower));
      histogram[(bin + 1) % orientation_bins] += m * (p - lower);
    }
  }
  return histogram;
}

orientations smoothed(const orientations& histogram) {
  static const orientations density = normal_density();
  orientations result{};
  for (std::size_t bin = 0; bin < orientation_bins; ++bin) {
    for (std::size_t from = 0; from < orientation_bins; ++from) {
      result[bin] += histogram[from] * density[(bin + orientation_bins - from) % orientation_bins];
    }
  }
  return result;
}

std::vector<orientation_peak> orientation_peaks(const orientations& histogram) {
  std::vector<orientation_peak> peaks;
  for (std::size_t bin = 0; bin < orientation_bins; ++bin) {
    const double value = histogram[bin];
    if (histogram[(bin + orientation_bins - 1) % orientation_bins] < value &&
        histogram[(bin + 1) % orientation_bins] < value) {
      const double t = static_cast<double>(bin) * pi / orientation_bins;
      peaks.push_back({{std::cos(t), std::sin(t)}, value});
    }
  }
  std::stable_sort(peaks.begin(), peaks.end(),
                   [](const auto& a, const auto& b) { return a.value > b.value; });
  return peaks;
}

}  // namespace ocpan

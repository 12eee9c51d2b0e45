#include "production/corner_orientation.h"

#include <algorithm>
#include <cmath>

#include "model/parameters.h"
#include "production/pixel_range.h"

namespace ocpan {
namespace {

constexpr double reach = 10.0;  // pixels

// The standard normal density at 0 to 16 bins: exp(-k^2 / 2) / sqrt(2 pi).
constexpr std::array<double, orientation_bins / 2 + 1> normal_density = {
    0.3989422804014327,     0.24197072451914337,    0.053990966513188063,   0.0044318484119380075,
    0.00013383022576488537, 1.4867195147342979e-06, 6.0758828498232861e-09, 9.1347204083645953e-12,
    5.0522710835368927e-15, 1.0279773571668917e-18, 7.6945986267064199e-23, 2.1188192535093538e-27,
    2.1463837356630605e-32, 7.9988277570068127e-38, 1.0966065593889713e-43, 5.5307095498444164e-50,
    1.0261630727919036e-56};

// The same round the circle, by the difference of two bins.
constexpr orientations density_by_difference = [] {
  orientations density{};
  for (std::size_t bin = 0; bin < orientation_bins; ++bin) {
    density[bin] = normal_density[std::min(bin, orientation_bins - bin)];
  }
  return density;
}();

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
  orientations result{};
  for (std::size_t bin = 0; bin < orientation_bins; ++bin) {
    for (std::size_t from = 0; from < orientation_bins; ++from) {
      result[bin] += histogram[from] *
                     density_by_difference[(bin + orientation_bins - from) % orientation_bins];
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

#include "tools/evaluate/residual_spread.h"

#include <algorithm>
#include <cmath>

namespace ocpan {
namespace {

double at_fraction(const std::vector<double>& sorted, double fraction) {
  const double place = fraction * static_cast<double>(sorted.size() - 1);
  const auto below = static_cast<std::size_t>(place);
  const std::size_t above = std::min(below + 1, sorted.size() - 1);
  const double part = place - static_cast<double>(below);
  return sorted[below] + part * (sorted[above] - sorted[below]);
}

}  // namespace

residual_spread spread_of(std::vector<double> lengths) {
  lengths.erase(std::remove_if(lengths.begin(), lengths.end(),
                               [](double length) { return !std::isfinite(length); }),
                lengths.end());
  residual_spread spread;
  spread.count = lengths.size();
  if (lengths.empty()) return spread;
  std::sort(lengths.begin(), lengths.end());
  for (const double length : lengths) {
    spread.mean += length;
    spread.rms += length * length;
  }
  const double count = static_cast<double>(lengths.size());
  spread.mean /= count;
  spread.rms = std::sqrt(spread.rms / count);
  spread.median = at_fraction(lengths, 0.5);
  spread.percentile_95 = at_fraction(lengths, 0.95);
  spread.maximum = lengths.back();
  return spread;
}

void residual_collector::add(const corner_residual& corner) {
  pixels_.push_back(corner.residual.norm());
  milliradians_.push_back(corner.milliradians);
}

void residual_collector::add(const evaluated_view& view) {
  for (const corner_residual& corner : view.corners) add(corner);
}

}  // namespace ocpan

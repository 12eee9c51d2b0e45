#pragma once

#include <vector>

#include "tools/evaluate/evaluation.h"

namespace ocpan {

// How some lengths spread. Those that aren't finite don't count; order statistics between
// two values are interpolated.
residual_spread spread_of(std::vector<double> lengths);

// Gathers corners for a summary.
class residual_collector {
 public:
  void add(const corner_residual& corner);
  void add(const evaluated_view& view);
  residual_summary summary() const { return {spread_of(pixels_), spread_of(milliradians_)}; }

 private:
  std::vector<double> pixels_, milliradians_;
};

}  // namespace ocpan

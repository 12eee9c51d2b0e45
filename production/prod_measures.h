#pragma once

#include <cstdint>
#include <vector>

namespace ocpan {

// The measures of a production run. A pair is a pair of cameras with matches, counted as
// the refinement lists them. A feature delta is how far a corner's sphere point moved from
// the input calibration to the refined one, in cells of the pattern.
struct prod_measures {
  double radius_min = 0;          // over all refined features, mm
  double radius_max = 0;          // mm
  double reprojection_max = 0;    // pixels
  double reprojection_mean = 0;   // pixels
  std::uint32_t point_count = 0;  // samples: two per matched feature, one in each camera
  double delta_mean = 0;
  double delta_max = 0;
  std::vector<std::int32_t> pair_count;  // samples
  std::vector<double> pair_radius_min;   // mm
  std::vector<double> pair_radius_max;   // mm
  std::vector<double> pair_reprojection_max;
  std::vector<double> pair_reprojection_mean;
  std::vector<double> cam_delta_mean;
  std::vector<double> cam_delta_max;
};

}  // namespace ocpan

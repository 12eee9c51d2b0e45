#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "model/parameters.h"
#include "src/camera_details.h"
#include "tools/adjust/adjust_rig.h"
#include "tools/boards/seen_boards.h"
#include "tools/evaluate/evaluation.h"

namespace ocpan {

// Standard deviations of what some boards tell of a rig, with all parameters free.
struct camera_uncertainty {
  double mapping_pixels;  // RMS over the picture, after the best turn of the camera
  double worst_pixels;    // where it is largest
};
struct pair_uncertainty {
  std::size_t first;  // into the rig, below second
  std::size_t second;
  std::optional<double> seam_degrees;  // RMS over what both see; none if their pictures don't meet
};
struct rig_uncertainty {
  double corner_pixels = 0;  // noise of a corner's coordinate
  std::vector<camera_uncertainty> cameras;
  std::vector<pair_uncertainty> pairs;
};

// Carries a fit's covariance to the pictures, and to the seams of pairs.
rig_uncertainty uncertainty_of(const adjusted_rig& fit, const std::vector<camera_details>& details,
                               const std::vector<evaluated_pair>& pairs);

// The boards that an evaluation used.
std::vector<seen_board> used_boards(const evaluation& found, const std::vector<seen_board>& boards);

}  // namespace ocpan

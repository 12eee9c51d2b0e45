#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "production/feature_records.h"

namespace ocpan {

// Mean and deviation of the smoothed grey values inside each quad; not-a-number for a quad
// that covers no pixel.
//
//   picture   8-bit, one channel, as read
//   quads     indices into corners
std::vector<quad_stats> quad_intensity_stats(const cv::Mat& picture,
                                             const std::vector<prod_quad>& quads,
                                             const std::vector<prod_corner>& corners);

// Sorts quads into white and black by their surroundings: the threshold of a quad is half
// way between the brightest and the darkest of the quads that share a corner with it, which
// follows vignetting; where these don't differ clearly it is 128. Uneven quads, and those
// too near to their threshold, are in neither list. Keeps the order of the quads.
//
//   stats   one per quad
quad_lists classify_quads(const std::vector<prod_quad>& quads,
                          const std::vector<quad_stats>& stats);

}  // namespace ocpan

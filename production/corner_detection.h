#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "production/corner_response.h"

namespace ocpan {

// Finds places that look like checker corners in a grey picture: the peaks of the corner
// response over the radii 5, 7, 9 and 13, each moved to the centre of gravity of the
// response around it. In row-major order of the peaks; two peaks may give nearly the same
// place.
//
//   picture   8-bit, one channel
std::vector<cv::Point2d> detect_corner_candidates(const cv::Mat& picture, corner_scratch& scratch);

}  // namespace ocpan

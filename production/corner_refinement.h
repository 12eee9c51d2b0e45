#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "production/feature_records.h"

namespace ocpan {

// Turns candidates into corners: finds the two edge directions at each from the gradients
// around it, moves it to the point where the gradients agree best, and keeps it if a patch
// around it looks like a crossing of two edges. Of corners nearer than 4 pixels to one
// another the first is kept. In the order of the candidates.
//
//   picture      8-bit, one channel, as read
//   candidates   pixels
std::vector<prod_corner> refine_corners(const cv::Mat& picture,
                                        const std::vector<cv::Point2d>& candidates);

}  // namespace ocpan

#pragma once

#include <opencv2/core.hpp>

#include "production/feature_records.h"

namespace ocpan {

// How well a patch around a corner looks like a crossing of two edges: the correlation of
// the gradient magnitude with the drawn edges, times the step in grey values between the
// two pairs of opposite quadrants (A. Geiger et al., "Automatic camera and range sensor
// calibration using a single shot", 2012). 0 for a patch without contrast and for one
// that misses a quadrant.
//
//   picture     grey values
//   magnitude   of the gradient
//   radius      of the patch, pixels; what lies outside the picture is left out
double corner_score(const cv::Mat1d& picture, const cv::Mat1d& magnitude, const prod_corner& corner,
                    int radius);

}  // namespace ocpan

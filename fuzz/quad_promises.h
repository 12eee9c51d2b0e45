#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "production/feature_records.h"

namespace ocpan::fuzz {

// Builds the quads of some corners, each of which must be a loop of four that begins with its
// smallest index, found once.
std::vector<prod_quad> must_build_quads(const std::vector<prod_corner>& corners);

// Sorts quads by colour on a picture; each must be of one colour at most, and in order.
quad_lists must_classify_quads(const cv::Mat& picture, const std::vector<prod_quad>& quads,
                               const std::vector<prod_corner>& corners);

}  // namespace ocpan::fuzz

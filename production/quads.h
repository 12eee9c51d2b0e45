#pragma once

#include <vector>

#include "production/feature_records.h"

namespace ocpan {

// Joins corners into four-sided cells: from each corner, along each pair of signs of its
// two edge directions, to the nearest corners, if the way round closes and opposite sides
// are alike. A cell comes once, where it is first found, with its smallest index first; its
// loop runs clockwise as seen in the picture.
std::vector<prod_quad> build_quads(const std::vector<prod_corner>& corners);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <vector>

#include "tools/verify/coverage.h"

namespace ocpan {

// Where two neighbouring cameras both have weight. Widths are measured square to the seam,
// the plane half way between the cameras, in pieces of 10 degrees along it; a piece at
// either end, where the overlap tapers off, doesn't count if there are others.
struct camera_overlap {
  std::size_t first = 0, second = 0;
  double solid_angle = 0;    // steradians
  double width_degrees = 0;  // the median
  double narrowest_degrees = 0;
};

// The overlaps of all neighbours. Two cameras are neighbours if none lies between the
// middles of what they cover; their overlap may be 0. Cameras that cover nothing have none.
std::vector<camera_overlap> overlaps_of(const std::vector<cube_sample>& samples,
                                        const std::vector<camera_reach>& cameras);

}  // namespace ocpan

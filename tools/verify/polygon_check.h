#pragma once

#include <vector>

#include <Eigen/Core>

#include "tools/device_preview.h"
#include "tools/verify/coverage.h"

namespace ocpan {

// How a polygon lies to the weights of its camera.
struct polygon_comparison {
  bool is_outline = true;       // all its vertices are unit directions
  bool holds_middle = true;     // the middle of the weights lies within
  double outside = 0;           // steradians with weight that lie beyond it
  double farthest_degrees = 0;  // how far beyond
};

// Compares a polygon with the directions in which its camera has weight. What the polygon
// encloses lies to its right as it is walked along and seen from the rig.
polygon_comparison compare_polygon(const device_polygon& polygon,
                                   const std::vector<cube_sample>& samples,
                                   const camera_reach& camera);

}  // namespace ocpan

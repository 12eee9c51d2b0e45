#pragma once

#include <vector>

#include "model/parameters.h"
#include "src/camera_details.h"
#include "tools/report/svg.h"

namespace ocpan {

// What a camera sees, as a cone in the rig's frame.
struct camera_outline {
  Eigen::Vector3d centre;
  std::vector<Eigen::Vector3d> ends;  // of rays all over the picture and around its rim
  Eigen::Vector3d ahead;              // a bit beyond the ray of the picture's middle
};

// Where the picture's rim lies beyond what the lens images, the cone ends with the image.
//
//   reach   the length of the rays, unit of board_scale
[[nodiscard]] camera_outline outline_of(const model_map& model, const camera_details& details,
                                        double reach);

// The convex hull of some points, without those within.
[[nodiscard]] polygon hull_of(const polygon& points);

}  // namespace ocpan

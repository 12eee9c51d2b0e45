#pragma once

#include <cstdint>
#include <vector>

#include "calfiles/cal.h"
#include "tools/verify/cube_sphere.h"

namespace ocpan {

// In which directions of a list of samples a camera has weight in its table. A direction
// without a position, as the axis of a project file's camera, counts like the sample next to
// it: its entry is 0, and no hole.
//
//   entries     of the table, as they lie in the file
//   positions   of the camera, a block per face
std::vector<std::uint8_t> weights_of(const std::vector<std::uint64_t>& entries,
                                     const std::vector<point_block>& positions,
                                     const std::vector<cube_sample>& samples);

// Which directions of a list of samples lie in a camera's picture, whatever its mask says:
// within its sides, for a fisheye of kind 2 within the ellipse that touches them, and where
// the pixel looks back in that direction. (Directions behind a lens may have positions in
// its picture too.)
//
//   positions   of the camera, a block per face
std::vector<std::uint8_t> seen_by(const cal& calibration, std::size_t camera,
                                  const std::vector<point_block>& positions,
                                  const std::vector<cube_sample>& samples, bool project_file);

}  // namespace ocpan

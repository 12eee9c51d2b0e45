#pragma once

#include <vector>

#include "model/parameters.h"
#include "src/camera_details.h"

namespace ocpan {

// How far a camera of an estimated rig is from the true one.
struct camera_difference {
  double rotation_degrees = 0;  // after the rigs were laid onto one another by camera 0
  double position = 0;          // likewise, unit of the rig
  double mapping_pixels = 0;    // RMS over the picture, after the best turn of this camera
};

// Compares an estimated rig with the truth, camera by camera. A camera's turn is the one
// that carries its rays of the whole picture best onto the true ones, so it doesn't matter
// how a lens shares an error between its axis and its centre. Camera 0 has rotation and
// position 0. Pixels that either model can't carry back, or outside the field of view of a
// fisheye, are left out; mapping_pixels is not a number where nothing remains.
//
//   estimated, truth, details   of the same cameras
std::vector<camera_difference> compare_rigs(const rig& estimated, const rig& truth,
                                            const std::vector<camera_details>& details);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <vector>

#include "tools/boards/rig_pictures.h"

namespace ocpan {

// A number for each frame: [set][frame].
using frame_numbers = std::vector<std::vector<std::size_t>>;

// Numbers the moments of a series of pictures from 0, in order of their first frames: frames
// that share a picture are of one moment.
frame_numbers moments_of(const rig_pictures& pictures);

// Deals the frames out to parts from 0 on, turn by turn, so that each set gives about as
// many to every part and the frames of one moment go together.
//
//   parts   at least 1
frame_numbers dealt_frames(const rig_pictures& pictures, std::size_t parts);

// How many moments there are: the most parts that are of use.
std::size_t moment_count(const rig_pictures& pictures);

}  // namespace ocpan

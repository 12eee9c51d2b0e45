#pragma once

#include <cstddef>
#include <vector>

#include "model/parameters.h"
#include "model/pose.h"

namespace ocpan {

// What each stage of a calibration lets move. A list's order is that of the solver's
// columns. From the rig stage on, camera 0 fixes the rig's frame: its centre, axis and
// skew (H_1) stay.
using free_parameters = std::vector<std::vector<parameter_name>>;

// Each lens alone: scales, image centre and law.
free_parameters free_for_lenses(std::size_t cameras);
// The rig: the other cameras' places and axes too.
free_parameters free_for_rig(std::size_t cameras);
// Everything: distortion and its axis too.
free_parameters free_for_all(std::size_t cameras);

// All six numbers of a pose.
std::vector<pose_param_name> free_poses();

}  // namespace ocpan

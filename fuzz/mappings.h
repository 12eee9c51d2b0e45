#pragma once

#include "calfiles/cal.h"

namespace ocpan::fuzz {

// Takes a few directions to pixels and a few pixels to points, by each camera of a
// calibration, and asks for all its facts: results and shapes must be those promised.
// Cameras and their pictures may disagree in number.
void must_map(const cal& calibration);

}  // namespace ocpan::fuzz

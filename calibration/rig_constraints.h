#pragma once

#include <vector>

#include "model/constraint_terms.h"
#include "src/camera_details.h"

namespace ocpan {

// The soft terms of a calibration: each camera's distortion axis on its axis and its rho
// near 0; then, among the fisheyes and among the rectilinear lenses, each camera tied to
// the first of its kind in law, rho, image centre and scale.
std::vector<constraint_term> rig_constraints(const std::vector<camera_details>& cameras);

}  // namespace ocpan

#pragma once

#include <Eigen/Core>

#include "model/parameters.h"

namespace ocpan {

// Whether a lens has a ray for a pixel: its distortion still grows there, and the law goes
// so far.
bool lens_reaches(const model_map& lens, const Eigen::Vector2d& pixel);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <string>

#include <opencv2/core.hpp>

#include "simulator/rig_description.h"

namespace ocpan {

// The mask of a camera, 8-bit, 255 and 0: the pixels whose direction is nearer to this
// camera's axis than to any other's, and those up to overlap_degrees beyond.
cv::Mat render_mask(const rig_description& description, std::size_t camera, double overlap_degrees);

// Writes the masks of all cameras as "mask_0.png" and so on into a folder, which must be
// there. Gives an error text, empty if all is well.
[[nodiscard]] std::string write_masks(const std::string& folder, const rig_description& description,
                                      double overlap_degrees);

}  // namespace ocpan

#pragma once

#include "src/camera_details.h"
#include "tools/report/plot.h"

namespace ocpan {

// A chart over a camera's picture in true proportions, with room for a legend above it.
[[nodiscard]] plot picture_plot(const camera_details& details);

}  // namespace ocpan

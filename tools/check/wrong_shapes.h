#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "tools/boards/rig_pictures.h"
#include "tools/check/finding.h"

namespace ocpan {

// A camera's pictures in which another board stands than the configuration says. Inner
// corners along the two sides.
struct wrong_shape {
  std::size_t camera = 0;  // into the rig
  std::pair<int, int> told;
  std::pair<int, int> likely;
};

// Looks at a few pictures of each camera and board. To look for a board of a wrong shape
// takes long, in all pictures minutes, so this is found out ahead.
[[nodiscard]] std::vector<wrong_shape> find_wrong_shapes(const rig_pictures& pictures);

[[nodiscard]] std::vector<finding> shape_remarks(const std::vector<wrong_shape>& shapes);

}  // namespace ocpan

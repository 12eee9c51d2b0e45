#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace ocpan {

// A checker corner of one picture: its place and the directions of the two edges that
// cross there. A camera's corners stand in order of detection, and the index into that
// list names a corner in all later stages.
struct prod_corner {
  double x = 0;  // pixels
  double y = 0;
  double e1_x = 0;  // unit direction along the first edge, either way
  double e1_y = 0;
  double e2_x = 0;  // unit direction along the second edge, either way
  double e2_y = 0;
};

// A cell of the checker pattern: the indices of its four corners in loop order. As it is
// found it starts at the smallest index; a matched one may start at any of its corners.
using prod_quad = std::array<std::int32_t, 4>;

// The pixels inside a quad: mean and standard deviation; not-a-number without a pixel.
struct quad_stats {
  double mean = 0;
  double deviation = 0;
};

// The quads of one camera by colour.
struct quad_lists {
  std::vector<prod_quad> white;
  std::vector<prod_quad> black;
};

}  // namespace ocpan

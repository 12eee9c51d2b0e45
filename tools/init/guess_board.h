#pragma once

#include <string>
#include <utility>
#include <vector>

namespace ocpan {

// Looks for boards of the common shapes in pictures and
// gives the inner corners along the two sides of the first shape that most pictures hold;
// 0 and 0 if none does. A wrong shape costs up to half a second in a picture, so a few
// pictures are enough.
[[nodiscard]] std::pair<int, int> guess_board(const std::vector<std::string>& pictures);

// How many of the pictures hold a board with these inner corners along its sides.
[[nodiscard]] int boards_of_shape(const std::vector<std::string>& pictures,
                                  std::pair<int, int> shape);

}  // namespace ocpan

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "src/camera_details.h"

namespace ocpan {

inline constexpr int fewest_boards_for_a_lens = 3;

// A lens as it can be told from a few pictures.
struct lens_guess {
  camera_details camera;  // size from the pictures; a rectilinear lens of 60 degrees if no board
                          // tells more
  int boards = 0;         // that the guess rests on
  bool sizes_differ = false;
};

// Guesses a camera from its pictures: the lens law and the field of view under which the
// boards in them lie flattest, to a degree. A fisheye whose picture is black in all corners
// is of the kind whose circle lies within the picture.
//
//   board   inner corners; 0 and 0 to look at the pictures' sizes only
[[nodiscard]] lens_guess guess_lens(const std::vector<std::string>& pictures,
                                    std::pair<int, int> board);

}  // namespace ocpan

#pragma once

#include <vector>

#include "tools/boards/found_boards.h"
#include "tools/check/finding.h"

namespace ocpan {

// How the pictures of one camera fared, each picture counted once.
struct camera_pictures {
  int found = 0;
  int not_found = 0;
  int unreadable = 0;
  int wrong_size = 0;
  int cut_short = 0;  // among the others
};

// Per camera.
[[nodiscard]] std::vector<camera_pictures> count_pictures(const rig_pictures& pictures,
                                                          const found_boards& boards);

// Pictures that can't be read, are cut short, have another size or show no board.
[[nodiscard]] std::vector<finding> picture_remarks(const rig_pictures& pictures,
                                                   const found_boards& boards);

}  // namespace ocpan

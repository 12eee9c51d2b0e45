#pragma once

#include <string>
#include <vector>

#include "tools/boards/found_boards.h"
#include "tools/boards/rig_pictures.h"

namespace ocpan {

// A picture in which no board could be looked for.
struct unusable_picture {
  std::string file;
  std::string why;  // "it can't be opened or decoded", "it is 64 x 48, not 640 x 480"
};

// The unreadable pictures and those of a wrong size, each once, by set, frame and camera.
[[nodiscard]] std::vector<unusable_picture> unusable_pictures(const rig_pictures& pictures,
                                                              const found_boards& found);

}  // namespace ocpan

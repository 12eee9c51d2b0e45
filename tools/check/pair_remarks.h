#pragma once

#include <vector>

#include "tools/check/finding.h"
#include "tools/check/pair_poses.h"

namespace ocpan {

// Boards whose corners two cameras count from different ends, and series of two cameras
// that don't belong together, with the frames. Where one camera is at fault with several
// others it is told once.
[[nodiscard]] std::vector<finding> pair_remarks(const rig_pictures& pictures,
                                                const found_boards& boards,
                                                const std::vector<pair_poses>& pairs);

}  // namespace ocpan

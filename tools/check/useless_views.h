#pragma once

#include <vector>

#include "tools/boards/found_boards.h"
#include "tools/check/finding.h"

namespace ocpan {

// Views that a calibration takes but can't learn from: boards seen edge-on, whose corners lie
// nearly on one line, and two cameras of a set with the board in the very same place of their
// pictures, which then are the same pictures.
[[nodiscard]] std::vector<finding> useless_view_remarks(const rig_pictures& pictures,
                                                        const found_boards& boards);

}  // namespace ocpan

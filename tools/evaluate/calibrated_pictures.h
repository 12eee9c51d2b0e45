#pragma once

#include <string>
#include <vector>

#include "model/parameters.h"
#include "src/camera_details.h"
#include "tools/boards/found_boards.h"
#include "tools/boards/rig_pictures.h"
#include "tools/boards/seen_boards.h"

namespace ocpan {

// A calibration and the boards of some pictures of the same rig.
struct calibrated_pictures {
  rig models;
  std::vector<camera_details> details;  // as the calibration tells them
  rig_pictures pictures;
  found_boards found;
  std::vector<seen_board> boards;
};

// Reads a calibration file and a configuration, sees that their cameras agree, and looks for
// the boards, with a progress bar on a terminal. Tells what fails, with what to do.
//
// Gives an exported code.
[[nodiscard]] int read_calibrated_pictures(calibrated_pictures& out, const std::string& calibration,
                                           const std::string& configuration);

// The pictures of a board, as "left04.jpg, right04.jpg": names without folders, of those
// cameras of the frame that saw it.
[[nodiscard]] std::string picture_names(const rig_pictures& pictures, std::size_t set,
                                        std::size_t frame, const std::vector<std::size_t>& cameras);

}  // namespace ocpan

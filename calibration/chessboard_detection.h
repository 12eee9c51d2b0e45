#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <Eigen/Core>

#include "calibration/frame_sets.h"

namespace ocpan {

// What one camera saw of the board in one frame.
struct board_view {
  bool found = false;
  // 2 x N pixels in the detector's order, N the inner corners of the board; no column if
  // the board wasn't found. (0, 0) is the middle of the top left pixel.
  Eigen::Matrix2Xd corners;
};

// The views of one frame, side by side with the set's cameras. A picture that can't be read
// ends the frame, so there may be fewer views than cameras, or none.
using frame_views = std::vector<board_view>;

// The name of the debug picture of a frame, with backslashes.
//
//   camera_position   the camera's place in the set's list, from 0
[[nodiscard]] std::string frame_picture_name(const std::string& set_name,
                                             std::size_t camera_position, std::size_t frame);

// Reads every picture of the sets and finds the boards: per set, its frames in order. Sets
// ran_out in the sets. Writes a picture of each board that failed, and with save_frames of
// each that was found, to the folder .\tmp\ if there is one. Prints a line per picture.
// Nothing in a picture fails the run; it only leaves less data.
[[nodiscard]] std::vector<std::vector<frame_views>> detect_boards(std::vector<cal_frame_set>& sets);

}  // namespace ocpan

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "calibration/board_groups.h"
#include "tools/boards/rig_pictures.h"

namespace ocpan {

enum class picture_state {
  found,       // the board is in the picture
  not_found,   // the picture is good but no board is found
  unreadable,  // it can't be opened or decoded
  wrong_size   // not the camera's width and height
};

// How one picture fared.
struct picture_finding {
  picture_state state = picture_state::unreadable;
  int width = 0;             // pixels, of the picture as it is; 0 if unreadable
  int height = 0;            // pixels
  bool cut_short = false;    // a JPEG without its end marker; the rest may still be found
  Eigen::Matrix2Xd corners;  // 2 x N pixels, in the detector's order; no column unless found
};

// What was found in all pictures that a run takes: [set][frame][camera of the set].
using found_boards = std::vector<std::vector<std::vector<picture_finding>>>;

// The name of the file that keeps the corners of a configuration's pictures: beside its
// output, with "_corners.json" behind the name. With backslashes.
[[nodiscard]] std::string corner_file_name(const std::string& output_file);

// Looks for the boards with a quick look first, on all processors, and keeps what was
// found in the corner file. A picture whose name, size and time are in the corner file
// isn't opened again.
//
//   progress   told how many of the pictures are done, on any thread but one at a time;
//              empty for nobody
//   warnings   gets a sentence when the corner file can't be read or written; that costs
//              time only
[[nodiscard]] found_boards find_boards(const rig_pictures& pictures,
                                       const std::function<void(int done, int total)>& progress,
                                       std::vector<std::string>& warnings);

// The findings as a calibration run takes them; pictures that are no use count as pictures
// without a board.
[[nodiscard]] board_frames frames_of(const found_boards& boards);

}  // namespace ocpan

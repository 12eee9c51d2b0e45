#pragma once

#include <deque>
#include <string>
#include <vector>

namespace ocpan {

// Owns every set name and file path of one call. A deque, so that a string keeps its
// address while more are appended.
using string_pool = std::deque<std::string>;

// One camera of a set, with the pictures its pattern matched.
struct set_camera {
  int id = 0;                      // counted from 1, as written in the configuration
  std::vector<const char*> files;  // full paths in listing order, owned by the string_pool
  int file_type = 0;               // picture format for read_image
};

// One calibration set: one board placed before some cameras, shot in a series of frames.
// The start values stand for what hasn't been read yet.
struct set_config {
  const char* set_prefix = nullptr;  // name, owned by the string_pool
  std::vector<set_camera> cameras;
  int board_width = -1;     // inner corners
  int board_height = -1;    // inner corners
  float board_scale = -1;   // side of a square; its unit is the unit of all lengths
  bool save_frames = true;  // write debug pictures of detected boards
};

}  // namespace ocpan

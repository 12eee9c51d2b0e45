#pragma once

#include <optional>
#include <string>
#include <vector>

#include "src/camera_details.h"

namespace ocpan {

// The cameras section of a configuration as far as it was read.
struct camera_section {
  std::vector<camera_details>& cameras;  // the last one is being read
  bool lens_seen = false;                // of the last camera
  bool closed = false;                   // by a calibration_sets key
};

// Reads a line of the section. Gives the code that the whole reading ends with, 0 among
// them, or nothing if it goes on. What ends the reading has printed its message.
[[nodiscard]] std::optional<int> read_camera_line(camera_section& section, const std::string& line);

}  // namespace ocpan

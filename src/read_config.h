#pragma once

#include <string>
#include <vector>

#include "src/camera_details.h"
#include "src/set_config.h"

namespace ocpan {

// Reads the configuration of a calibration run: the cameras, the sets with their picture
// files found on disk, the name of the output. Prints a summary of what it found.
//
//   cameras      appended to, in file order; what wasn't given is -1. Expected empty
//   sets         appended to, in file order. Expected empty
//   output_file  with backslashes
//   pool         gets the set names and file paths that the sets point to
//   config_file  path of the file, not null
//
// Relative folders count from the working folder. A failure prints its message and leaves
// what was read before it. The result is an internal code, with three exceptions: after an
// incomplete camera it is 0 (reading ends there, the sets stay empty) or, with its width
// missing, 1; an unknown key of a camera or a lens out of range gives a number that is no
// internal code, so that map_result makes it the general failure.
[[nodiscard]] int read_config(std::vector<camera_details>& cameras, std::vector<set_config>& sets,
                              std::string& output_file, string_pool& pool, const char* config_file);

}  // namespace ocpan

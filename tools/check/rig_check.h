#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/check/coverage.h"
#include "tools/check/finding.h"
#include "tools/check/picture_remarks.h"
#include "tools/check/repeated_frames.h"
#include "tools/check/rig_links.h"

namespace ocpan {

// All that a check finds out.
struct rig_check {
  std::string configuration;
  int result = 0;                         // internal code of the library's reader
  std::string library_said;               // its last lines if it refuses the configuration
  std::vector<finding> findings;          // the configuration's first, then the pictures'
  bool pictures_seen = false;             // the rest is empty otherwise
  std::vector<camera_pictures> pictures;  // per camera
  rig_links links;
  std::vector<camera_coverage> coverage;  // per camera
  std::vector<repeated_frame> repeated;
  std::vector<std::string> set_names;  // that repeated points into
  std::vector<std::string> warnings;   // of the corner file
};

// Checks a configuration and, if the library takes it, its pictures.
//
//   configuration   a file that can be read
//   progress        as find_boards tells it; may be empty
[[nodiscard]] rig_check check_rig(const std::string& configuration,
                                  const std::function<void(int done, int total)>& progress);

// Adds what the pictures and their boards tell.
void check_pictures(rig_check& check, const rig_pictures& pictures, const found_boards& boards);

}  // namespace ocpan

#pragma once

#include <string>
#include <vector>

#include "calibration/frame_sets.h"
#include "src/camera_details.h"
#include "src/set_config.h"

namespace ocpan {

// What a configuration names, as a calibration run takes it. Not copied: the sets point into
// the pool.
struct rig_pictures {
  rig_pictures() = default;
  rig_pictures(rig_pictures&&) = default;
  rig_pictures& operator=(rig_pictures&&) = default;

  std::string configuration;            // its file name as given
  std::string output_file;              // with backslashes
  std::vector<camera_details> cameras;  // 2 to 8
  std::vector<cal_frame_set> sets;      // in file order, without those that a run drops
  string_pool pool;
};

// Reads a configuration through the library's own reader.
//
//   said   the lines that the reader printed, which are not shown
//
// Gives 0 or the internal code that a calibration run would end with.
[[nodiscard]] int read_rig_pictures(rig_pictures& pictures, std::string& said,
                                    const std::string& configuration);

}  // namespace ocpan

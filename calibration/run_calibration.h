#pragma once

#include <string>
#include <vector>

#include "src/camera_details.h"
#include "src/run_report.h"
#include "src/set_config.h"

namespace ocpan {

// Calibrates the rig from the sets' pictures and writes the calibration file.
//
//   output_file   the calibration file
//   report        cleared by the caller; measures, one entry per set
//
// Gives 0, code::argument_invalid for a lens other than 0, 1 and 2, or what saving gave.
[[nodiscard]] int run_calibration(const std::string& output_file,
                                  const std::vector<camera_details>& cameras,
                                  const std::vector<set_config>& sets, run_report& report);

}  // namespace ocpan

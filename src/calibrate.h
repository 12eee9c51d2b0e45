#pragma once

#include "include/oc_pan_cal.h"

namespace ocpan {

// The job of ocPAN_Cal: reads the configuration, calibrates, writes the calibration file
// and the reports. Gives an internal code.
//
//   config_file   not null
//   summary       may be null; filled once the run was begun, whatever became of it
[[nodiscard]] int calibrate(const char* config_file, qa_summary* summary);

}  // namespace ocpan

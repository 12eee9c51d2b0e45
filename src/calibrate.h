#pragma once

#include <string>
#include <vector>

#include "include/oc_pan_cal.h"
#include "src/camera_details.h"
#include "src/set_config.h"

namespace ocpan {

// What a calibration takes from a configuration: as read_config, then without the sets whose
// first camera has no picture, and with the camera ids checked. Gives an internal code.
//
//   config_file   not null
[[nodiscard]] int read_calibration_job(std::vector<camera_details>& cameras,
                                       std::vector<set_config>& sets, std::string& output_file,
                                       string_pool& pool, const char* config_file);

// The job of ocPAN_Cal: reads the configuration, calibrates, writes the calibration file
// and the reports. Gives an internal code.
//
//   config_file   not null
//   summary       may be null; filled once the run was begun, whatever became of it
[[nodiscard]] int calibrate(const char* config_file, qa_summary* summary);

}  // namespace ocpan

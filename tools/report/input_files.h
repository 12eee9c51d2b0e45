#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "tools/report/report_content.h"

namespace ocpan {

// The facts of the files that a report rests on: calibration, configuration, pictures. Reads
// every one. What can't be read has no checksum.
[[nodiscard]] std::vector<input_file> input_files(const std::string& calibration,
                                                  const std::string& configuration,
                                                  const std::vector<rig_picture>& pictures);

// "2024-05-01 12:30:05", local.
[[nodiscard]] std::string time_text(std::time_t time);

}  // namespace ocpan

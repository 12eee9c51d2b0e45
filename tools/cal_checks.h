#pragma once

#include <string>

#include "tools/cal_run.h"
#include "tools/output_name.h"

namespace ocpan {

// The configuration's output, as far as it can be told without the library. A pipe is left
// alone, since it can be read only once.
output_name look_for_output(const std::string& configuration);

// What stands in the way of writing the JSON file, or the calibration and its reports, with
// what to do about it; empty if nothing does. The library would notice only after hours of
// work.
std::string obstacle_to_json(const cal_options& options, const output_name& output);
std::string obstacle_to_calibration(const std::string& configuration, const output_name& output);

}  // namespace ocpan

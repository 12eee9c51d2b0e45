#pragma once

#include <string>
#include <vector>

#include "src/camera_details.h"
#include "src/set_config.h"

namespace ocpan {

// Prints what a configuration holds. Sets whose first camera has no files are passed over,
// though they count. Gives code::content_malformed, with a message, at a later camera
// without files.
//
//   sets  each with a name
[[nodiscard]] int print_config_summary(const std::string& output_file,
                                       const std::vector<camera_details>& cameras,
                                       const std::vector<set_config>& sets);

}  // namespace ocpan

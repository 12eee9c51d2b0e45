#pragma once

#include <string>
#include <vector>

#include "model/parameters.h"
#include "src/camera_details.h"
#include "tools/export/camera_axes.h"
#include "tools/export/lens_table.h"

namespace ocpan {

// A camera of a calibration as other software takes it.
struct exported_camera {
  camera_details details;
  model_map model;  // as the calibration file has it
  camera_axes axes;
  lens_table lens;  // reaches the farthest corner of the picture, or the law's end
};

// Puts the cameras of a calibration into axes of their own. Gives the index of the first
// whose axes or table aren't finite numbers, or the number of cameras if all are good.
//
//   models, details   of the same length
[[nodiscard]] std::size_t export_cameras(std::vector<exported_camera>& cameras, const rig& models,
                                         const std::vector<camera_details>& details);

// The whole text of a file. Both hold the same under the same names.
[[nodiscard]] std::string json_text(const std::vector<exported_camera>& cameras);
// As cv::FileStorage writes and reads it.
[[nodiscard]] std::string opencv_yaml_text(const std::vector<exported_camera>& cameras);

// What the numbers mean, by topic: stands at the head of each file.
struct convention {
  const char* topic;
  const char* meaning;
};
[[nodiscard]] const std::vector<convention>& export_conventions();

}  // namespace ocpan

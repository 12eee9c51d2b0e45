#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "src/camera_details.h"
#include "src/set_config.h"

namespace ocpan {

// A calibration set as the stages use it.
struct cal_frame_set {
  std::vector<set_camera> set_cameras;        // with their files, owned by the string_pool
  std::vector<camera_details> details;        // of all cameras of the rig
  bool ran_out = false;                       // a camera's files were used to the end
  std::vector<std::uint64_t> camera_indices;  // of set_cameras, into details and the rig
  int board_width = 0;                        // inner corners
  int board_height = 0;                       // inner corners
  std::string name;
  double board_scale = 0;   // side of a square; the unit of all lengths
  bool save_frames = true;  // write debug pictures of detected boards
};

// The sets of a configuration, in their order.
//
//   sets      camera ids from 1 to the number of cameras
//   cameras   the whole rig
[[nodiscard]] std::vector<cal_frame_set> make_frame_sets(
    const std::vector<set_config>& sets, const std::vector<camera_details>& cameras);

// How many frames a run takes from a set: as many as the camera with the fewest files has.
[[nodiscard]] std::size_t frame_count(const cal_frame_set& set);

}  // namespace ocpan

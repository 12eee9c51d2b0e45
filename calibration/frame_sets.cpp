#include "calibration/frame_sets.h"

#include <algorithm>

namespace ocpan {

std::vector<cal_frame_set> make_frame_sets(const std::vector<set_config>& sets,
                                           const std::vector<camera_details>& cameras) {
  std::vector<cal_frame_set> frame_sets;
  for (const set_config& set : sets) {
    cal_frame_set& made = frame_sets.emplace_back();
    made.set_cameras = set.cameras;
    made.details = cameras;
    for (const set_camera& camera : set.cameras) {
      made.camera_indices.push_back(static_cast<std::uint64_t>(camera.id - 1));
    }
    made.board_width = set.board_width;
    made.board_height = set.board_height;
    if (set.set_prefix) made.name = set.set_prefix;
    made.board_scale = set.board_scale;
    made.save_frames = set.save_frames;
  }
  return frame_sets;
}

std::size_t frame_count(const cal_frame_set& set) {
  const auto fewest = std::min_element(
      set.set_cameras.begin(), set.set_cameras.end(),
      [](const set_camera& a, const set_camera& b) { return a.files.size() < b.files.size(); });
  return fewest == set.set_cameras.end() ? 0 : fewest->files.size();
}

}  // namespace ocpan

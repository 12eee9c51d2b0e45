#include "tools/evaluate/unusable_pictures.h"

#include <set>

namespace ocpan {
namespace {

std::string size_text(int width, int height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

// Empty for a picture that can be used.
std::string why_unusable(const picture_finding& finding, const camera_details& camera) {
  if (finding.state == picture_state::unreadable) return "it can't be opened or decoded";
  if (finding.state != picture_state::wrong_size) return {};
  return "it is " + size_text(finding.width, finding.height) + ", not " +
         size_text(camera.width, camera.height);
}

}  // namespace

std::vector<unusable_picture> unusable_pictures(const rig_pictures& pictures,
                                                const found_boards& found) {
  std::vector<unusable_picture> unusable;
  std::set<std::string> told;
  for (std::size_t s = 0; s < found.size(); ++s) {
    const cal_frame_set& set = pictures.sets[s];
    for (std::size_t frame = 0; frame < found[s].size(); ++frame) {
      for (std::size_t c = 0; c < found[s][frame].size(); ++c) {
        const std::string why =
            why_unusable(found[s][frame][c], pictures.cameras[set.camera_indices[c]]);
        const std::string file = set.set_cameras[c].files[frame];
        if (!why.empty() && told.insert(file).second) unusable.push_back({file, why});
      }
    }
  }
  return unusable;
}

}  // namespace ocpan

#include <algorithm>
#include <map>
#include <set>

#include "tools/report/report_content.h"

namespace ocpan {
namespace {

const char* file_of(const rig_pictures& pictures, const seen_board& board, std::size_t camera) {
  const cal_frame_set& set = pictures.sets[board.set];
  const auto place = std::find(set.camera_indices.begin(), set.camera_indices.end(), camera);
  return set.set_cameras[static_cast<std::size_t>(place - set.camera_indices.begin())]
      .files[board.frame];
}

}  // namespace

std::vector<rig_picture> every_picture(const calibrated_pictures& input) {
  const rig_pictures& pictures = input.pictures;
  const std::vector<seen_board>& boards = input.boards;
  std::map<std::string, board_place> places;
  for (std::size_t board = 0; board < boards.size(); ++board) {
    const std::vector<std::size_t>& cameras = boards[board].cameras;
    for (std::size_t view = 0; view < cameras.size(); ++view) {
      places[file_of(pictures, boards[board], cameras[view])] = {board, view};
    }
  }
  std::set<std::pair<std::size_t, std::string>> known;  // by camera and file
  std::vector<rig_picture> all;
  for (std::size_t s = 0; s < pictures.sets.size(); ++s) {
    const cal_frame_set& set = pictures.sets[s];
    for (std::size_t frame = 0; frame < input.found[s].size(); ++frame) {
      for (std::size_t c = 0; c < set.set_cameras.size(); ++c) {
        rig_picture picture{set.set_cameras[c].files[frame], set.camera_indices[c], s, c, frame,
                            input.found[s][frame][c],        std::nullopt};
        if (!known.emplace(picture.camera, picture.file).second) continue;
        const auto place = places.find(picture.file);
        if (place != places.end()) picture.board = place->second;
        all.push_back(std::move(picture));
      }
    }
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const rig_picture& a, const rig_picture& b) { return a.camera < b.camera; });
  return all;
}

}  // namespace ocpan

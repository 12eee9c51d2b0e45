#include "tools/boards/seen_boards.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace ocpan {
namespace {

// A picture with the board that was looked for in it.
using board_picture = std::pair<std::string, std::pair<int, int>>;

board_picture picture_of(const cal_frame_set& set, std::size_t camera, std::size_t frame) {
  return {set.set_cameras[camera].files[frame], {set.board_width, set.board_height}};
}

struct frame_reference {
  std::size_t set = 0;
  std::size_t frame = 0;
  std::size_t found = 0;  // cameras that saw the board
};

std::vector<frame_reference> fullest_first(const found_boards& boards) {
  std::vector<frame_reference> frames;
  for (std::size_t set = 0; set < boards.size(); ++set) {
    for (std::size_t frame = 0; frame < boards[set].size(); ++frame) {
      const auto& findings = boards[set][frame];
      const auto found = std::count_if(findings.begin(), findings.end(), [](const auto& finding) {
        return finding.state == picture_state::found;
      });
      frames.push_back({set, frame, static_cast<std::size_t>(found)});
    }
  }
  std::stable_sort(frames.begin(), frames.end(),
                   [](const auto& a, const auto& b) { return a.found > b.found; });
  return frames;
}

// The views of a frame whose pictures weren't used before, by camera. A camera that stands
// twice in a set counts once.
std::map<std::size_t, Eigen::Matrix2Xd> new_views(const cal_frame_set& set, std::size_t frame,
                                                  const std::vector<picture_finding>& findings,
                                                  std::set<board_picture>& used) {
  std::map<std::size_t, Eigen::Matrix2Xd> views;
  for (std::size_t camera = 0; camera < findings.size(); ++camera) {
    if (findings[camera].state != picture_state::found) continue;
    if (!used.insert(picture_of(set, camera, frame)).second) continue;
    views.emplace(set.camera_indices[camera], findings[camera].corners);
  }
  return views;
}

}  // namespace

std::vector<seen_board> seen_boards(const rig_pictures& pictures, const found_boards& boards) {
  std::vector<seen_board> seen;
  std::set<board_picture> used;
  for (const frame_reference& at : fullest_first(boards)) {
    const cal_frame_set& set = pictures.sets[at.set];
    const auto views = new_views(set, at.frame, boards[at.set][at.frame], used);
    if (views.empty()) continue;
    seen_board& board = seen.emplace_back();
    board.set = at.set;
    board.frame = at.frame;
    board.points = board_points(set.board_width, set.board_height, set.board_scale);
    for (const auto& [camera, corners] : views) {
      board.cameras.push_back(camera);
      board.corners.push_back(corners);
    }
  }
  std::sort(seen.begin(), seen.end(), [](const seen_board& a, const seen_board& b) {
    return std::pair(a.set, a.frame) < std::pair(b.set, b.frame);
  });
  return seen;
}

}  // namespace ocpan

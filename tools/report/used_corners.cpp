#include "tools/report/camera_charts.h"

namespace ocpan {

std::vector<corner_residual> used_corners(const report_content& content, std::size_t camera) {
  std::vector<corner_residual> corners;
  for (const evaluated_board& board : content.quality.boards) {
    if (board.fate != board_fate::used) continue;
    for (const evaluated_view& view : board.views) {
      if (view.camera != camera) continue;
      corners.insert(corners.end(), view.corners.begin(), view.corners.end());
    }
  }
  return corners;
}

}  // namespace ocpan

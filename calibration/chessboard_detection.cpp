#include "calibration/chessboard_detection.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/board_corners.h"
#include "calibration/read_image.h"
#include "platform/native_path.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

// Draws the corners into the picture, in colour if the board was found, and writes it. A
// picture that can't be written is no loss.
void write_debug_picture(const std::string& name, const cv::Mat& grey, cv::Size board,
                         const std::vector<cv::Point2f>& corners, bool found) {
  try {
    cv::Mat picture = grey;
    if (found) cv::cvtColor(grey, picture, cv::COLOR_GRAY2BGR);
    cv::drawChessboardCorners(picture, board, corners, found);
    static_cast<void>(cv::imwrite(native_path(name), picture));
  } catch (...) {
    // Not written, then.
  }
}

// The board in a picture, and the debug picture and line that go with it.
board_view detect_board(const cv::Mat& grey, const cal_frame_set& set, std::size_t position,
                        std::size_t frame) {
  const cv::Size board(set.board_width, set.board_height);
  const std::string name = frame_picture_name(set.name, position, frame);
  std::vector<cv::Point2f> corners;
  board_view view;
  view.found = find_board_corners(corners, grey, board, board_search::thorough);
  if (view.found) view.corners = corner_matrix(corners);
  if (!view.found) {
    write_debug_picture(name, grey, board, corners, false);
    print_line("detect ", name, " chessboard failed");
  } else if (set.save_frames) {
    write_debug_picture(name, grey, board, corners, true);
    print_line("detect ", name, " chessboard successfully ");
  }
  return view;
}

frame_views detect_frame(cal_frame_set& set, std::size_t frame) {
  frame_views views;
  for (std::size_t position = 0; position < set.set_cameras.size(); ++position) {
    const set_camera& camera = set.set_cameras[position];
    if (camera.files.empty()) {
      print_line("No files in set");
      break;
    }
    if (camera.files.size() <= frame + 1) set.ran_out = true;
    const camera_details& details = set.details[set.camera_indices[position]];
    cv::Mat grey;
    if (read_image(grey, camera.files[frame], camera.file_type, details.width, details.height) !=
        code::success) {
      break;
    }
    views.push_back(detect_board(grey, set, position, frame));
  }
  return views;
}

}  // namespace

std::string frame_picture_name(const std::string& set_name, std::size_t camera_position,
                               std::size_t frame) {
  return ".\\tmp\\" + set_name + "_vid_" + std::to_string(camera_position) + "_" +
         std::to_string(frame) + ".jpg";
}

std::vector<std::vector<frame_views>> detect_boards(std::vector<cal_frame_set>& sets) {
  std::vector<std::vector<frame_views>> views;
  for (cal_frame_set& set : sets) {
    const std::size_t frames = frame_count(set);
    print_line("This cal_frame_set_number: ", frames);
    std::vector<frame_views>& set_views = views.emplace_back();
    for (std::size_t frame = 0; frame < frames; ++frame) {
      set_views.push_back(detect_frame(set, frame));
    }
  }
  return views;
}

}  // namespace ocpan

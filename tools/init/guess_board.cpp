#include "tools/init/guess_board.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

#include "calibration/board_corners.h"
#include "calibration/chessboard_detection.h"
#include "calibration/read_image.h"

namespace ocpan {
namespace {

constexpr int largest_width = 1600;  // pixels
// Noise makes the search for a wrong shape take seconds; without it the boards stay.
constexpr double blur = 1;  // sigma, pixels

// The common ones first. A board can hold a smaller one now and then, not mostly.
constexpr std::pair<int, int> shapes[] = {{9, 6},  {11, 8}, {8, 6},  {7, 6}, {10, 7}, {8, 5},
                                          {9, 7},  {7, 5},  {12, 9}, {6, 5}, {6, 4},  {5, 4},
                                          {13, 9}, {11, 7}, {12, 8}, {7, 7}, {8, 7},  {10, 6}};

std::vector<cv::Mat> calm_pictures(const std::vector<std::string>& files) {
  std::vector<cv::Mat> pictures;
  for (const std::string& file : files) {
    cv::Mat grey;
    if (!decode_grey(grey, file.c_str())) continue;
    if (grey.cols > largest_width) {
      const double scale = static_cast<double>(largest_width) / grey.cols;
      cv::Mat smaller;
      cv::resize(grey, smaller, cv::Size(), scale, scale, cv::INTER_AREA);
      grey = smaller;
    }
    cv::GaussianBlur(grey, grey, cv::Size(), blur);
    pictures.push_back(grey);
  }
  return pictures;
}

}  // namespace

int boards_of_shape(const std::vector<std::string>& files, std::pair<int, int> shape) {
  int found = 0;
  for (const std::string& file : files) {
    for (const cv::Mat& picture : calm_pictures({file})) {
      std::vector<cv::Point2f> corners;
      const cv::Size size(shape.first, shape.second);
      found += find_board_corners(corners, picture, size, board_search::quick) ? 1 : 0;
    }
  }
  return found;
}

std::pair<int, int> guess_board(const std::vector<std::string>& files) {
  const std::vector<cv::Mat> pictures = calm_pictures(files);
  for (const auto& [width, height] : shapes) {
    std::size_t found = 0, missed = 0;
    for (const cv::Mat& picture : pictures) {
      std::vector<cv::Point2f> corners;
      const bool here =
          find_board_corners(corners, picture, cv::Size(width, height), board_search::quick);
      ++(here ? found : missed);
      if (2 * missed >= pictures.size()) break;
    }
    if (2 * found > pictures.size()) return {width, height};
  }
  return {0, 0};
}

}  // namespace ocpan

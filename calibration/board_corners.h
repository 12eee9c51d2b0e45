#pragma once

#include <vector>

#include <Eigen/Core>
#include <opencv2/core/mat.hpp>

namespace ocpan {

// The two ways to look for a board. The quick one first asks whether the picture holds
// anything like a chessboard, so that an empty picture doesn't take seconds; where both find
// the board they find the same corners, but the quick one may miss a board in a hard picture.
enum class board_search { thorough, quick };

// Finds the inner corners of a chessboard to a fraction of a pixel.
//
//   corners   in the detector's order; (0, 0) is the middle of the top left pixel. After a
//             failure what the detector left, for a debug picture only
//   grey      CV_8UC1
//   board     inner corners along its two sides
//
// Gives false if the board isn't found, and if OpenCV throws on the picture. Safe on
// several threads.
[[nodiscard]] bool find_board_corners(std::vector<cv::Point2f>& corners, const cv::Mat& grey,
                                      const cv::Size& board, board_search search);

// The corners as a column each, 2 x N pixels.
[[nodiscard]] Eigen::Matrix2Xd corner_matrix(const std::vector<cv::Point2f>& corners);

}  // namespace ocpan

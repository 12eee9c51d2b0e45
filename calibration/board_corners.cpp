#include "calibration/board_corners.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

namespace ocpan {
namespace {

constexpr int finder_flags = cv::CALIB_CB_ADAPTIVE_THRESH | cv::CALIB_CB_NORMALIZE_IMAGE;
constexpr int refinement_half_window = 3;  // pixels
constexpr int refinement_iterations = 1000;
constexpr double refinement_epsilon = 0.001;  // pixels

}  // namespace

bool find_board_corners(std::vector<cv::Point2f>& corners, const cv::Mat& grey,
                        const cv::Size& board, board_search search) {
  const int flags = finder_flags | (search == board_search::quick ? cv::CALIB_CB_FAST_CHECK : 0);
  try {
    if (!cv::findChessboardCorners(grey, board, corners, flags)) return false;
    cv::cornerSubPix(grey, corners, cv::Size(refinement_half_window, refinement_half_window),
                     cv::Size(-1, -1),
                     cv::TermCriteria(cv::TermCriteria::COUNT | cv::TermCriteria::EPS,
                                      refinement_iterations, refinement_epsilon));
    return true;
  } catch (...) {
    return false;
  }
}

Eigen::Matrix2Xd corner_matrix(const std::vector<cv::Point2f>& corners) {
  Eigen::Matrix2Xd matrix(2, static_cast<Eigen::Index>(corners.size()));
  for (Eigen::Index k = 0; k < matrix.cols(); ++k) {
    const cv::Point2f& corner = corners[static_cast<std::size_t>(k)];
    matrix.col(k) << corner.x, corner.y;
  }
  return matrix;
}

}  // namespace ocpan

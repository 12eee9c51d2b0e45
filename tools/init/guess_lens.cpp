#include "tools/init/guess_lens.h"

#include <cmath>
#include <limits>

#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>

#include "calibration/board_corners.h"
#include "calibration/board_groups.h"
#include "calibration/read_image.h"
#include "model/board_pose.h"
#include "model/projection.h"

namespace ocpan {
namespace {

constexpr double fisheye_gain = 0.8;  // so much flatter the boards must lie under a fisheye's law
// Where a rectilinear lens with some barrel distortion and a fisheye can't be told apart.
constexpr double narrowest_fisheye = 100;   // degrees
constexpr double narrowest_field = 5;       // degrees
constexpr double widest_rectilinear = 140;  // degrees
constexpr int dark = 24;                    // grey level

struct lens_fit {
  double degrees = 0;
  double error = std::numeric_limits<double>::infinity();  // RMS, pixels
};

double error_under(const camera_details& camera, const std::vector<Eigen::Matrix2Xd>& boards,
                   const Eigen::Matrix3Xd& points) {
  const model_map lens = initial_model(camera);
  double sum = 0;
  for (const Eigen::Matrix2Xd& board : boards) {
    const ModelPose pose = estimate_board_pose({board}, points, {lens});
    Eigen::ArrayXd x, y;
    project_points(x, y, points, lens, pose.rotation, pose.translation);
    sum += ((x - board.row(0).transpose().array()).square() +
            (y - board.row(1).transpose().array()).square())
               .mean();
  }
  const double error = std::sqrt(sum / static_cast<double>(boards.size()));
  return std::isfinite(error) ? error : std::numeric_limits<double>::infinity();
}

lens_fit best_fit(camera_details camera, int lens, double widest,
                  const std::vector<Eigen::Matrix2Xd>& boards, const Eigen::Matrix3Xd& points) {
  camera.lens = lens;
  lens_fit best;
  const auto try_all = [&](double from, double to, double step) {
    for (int k = 0; from + k * step <= to; ++k) {
      const double degrees = from + k * step;
      camera.hfov = static_cast<float>(degrees);
      const double error = error_under(camera, boards, points);
      if (error < best.error) best = {degrees, error};
    }
  };
  try_all(20, widest, 10);
  const double middle = best.degrees;
  if (middle > 0) try_all(middle - 9, std::min(middle + 9, widest), 1);
  return best;
}

// The field of view of a rectilinear lens, degrees, by a calibration with free centre and a
// bit of distortion; without them a lens that bends lines comes out some degrees off, which
// can lead the calibration astray. 0 if it makes no sense.
double calibrated_field(const camera_details& camera, const std::vector<Eigen::Matrix2Xd>& boards,
                        const Eigen::Matrix3Xd& points) {
  std::vector<std::vector<cv::Point3f>> on_board(boards.size());
  std::vector<std::vector<cv::Point2f>> seen(boards.size());
  for (std::size_t k = 0; k < boards.size(); ++k) {
    for (Eigen::Index i = 0; i < points.cols(); ++i) {
      on_board[k].emplace_back(static_cast<float>(points(0, i)), static_cast<float>(points(1, i)),
                               0.0f);
      seen[k].emplace_back(static_cast<float>(boards[k](0, i)),
                           static_cast<float>(boards[k](1, i)));
    }
  }
  cv::Mat matrix, distortion, rotations, translations;
  try {
    cv::calibrateCamera(
        on_board, seen, cv::Size(camera.width, camera.height), matrix, distortion, rotations,
        translations, cv::CALIB_FIX_ASPECT_RATIO | cv::CALIB_ZERO_TANGENT_DIST | cv::CALIB_FIX_K3);
  } catch (const cv::Exception&) {
    return 0;
  }
  const double field = 2 * std::atan(camera.width / 2.0 / matrix.at<double>(0, 0)) * 180 / pi;
  return field > narrowest_field && field < widest_rectilinear ? field : 0;
}

bool has_black_corners(const cv::Mat& grey) {
  const int side = std::max(1, std::min(grey.cols, grey.rows) / 20);
  for (const int x : {0, grey.cols - side}) {
    for (const int y : {0, grey.rows - side}) {
      if (cv::mean(grey(cv::Rect(x, y, side, side)))[0] > dark) return false;
    }
  }
  return cv::mean(grey)[0] > 2 * dark;
}

}  // namespace

lens_guess guess_lens(const std::vector<std::string>& pictures, std::pair<int, int> board) {
  lens_guess guess{{0, 0, 60, 0}, 0, false};
  std::vector<Eigen::Matrix2Xd> boards;
  bool black_corners = true;
  for (const std::string& file : pictures) {
    cv::Mat grey;
    if (!decode_grey(grey, file.c_str())) continue;
    if (guess.camera.width == 0) guess.camera.width = grey.cols, guess.camera.height = grey.rows;
    if (grey.cols != guess.camera.width || grey.rows != guess.camera.height) {
      guess.sizes_differ = true;
      continue;
    }
    black_corners = black_corners && has_black_corners(grey);
    std::vector<cv::Point2f> corners;
    if (board.first > 0 && find_board_corners(corners, grey, cv::Size(board.first, board.second),
                                              board_search::quick)) {
      boards.push_back(corner_matrix(corners));
    }
  }
  guess.boards = static_cast<int>(boards.size());
  if (guess.boards < fewest_boards_for_a_lens) return guess;
  const Eigen::Matrix3Xd points = board_points(board.first, board.second, 1);
  const lens_fit straight = best_fit(guess.camera, 0, widest_rectilinear, boards, points);
  const lens_fit fisheye = best_fit(guess.camera, 1, 240, boards, points);
  const bool is_fisheye =
      fisheye.degrees >= narrowest_fisheye && fisheye.error < fisheye_gain * straight.error;
  guess.camera.lens = !is_fisheye ? 0 : black_corners ? 2 : 1;
  const double calibrated = is_fisheye ? 0 : calibrated_field(guess.camera, boards, points);
  const double degrees = is_fisheye       ? fisheye.degrees
                         : calibrated > 0 ? std::round(calibrated)
                                          : straight.degrees;
  guess.camera.hfov = static_cast<float>(degrees);
  return guess;
}

}  // namespace ocpan

#include "tools/stereo_peer/opencv_pair.h"

#include <cmath>

#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace ocpan {
namespace {

using corners = std::vector<cv::Point2f>;

struct frames {
  std::vector<std::vector<cv::Point3f>> boards;
  std::vector<corners> views[2];
  cv::Size size;  // of a picture, pixels
};

struct lens {
  cv::Mat matrix;
  cv::Mat distortion;
};

// The corners of a board as our own runs find them; none if it isn't found.
corners find_corners(const std::string& file, cv::Size board, cv::Size& picture_size) {
  const cv::Mat grey = cv::imread(file, cv::IMREAD_GRAYSCALE);
  corners found;
  if (grey.empty() || !cv::findChessboardCorners(grey, board, found)) return {};
  const cv::TermCriteria until(cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 1000, 0.001);
  cv::cornerSubPix(grey, found, cv::Size(3, 3), cv::Size(-1, -1), until);
  picture_size = grey.size();
  return found;
}

frames find_frames(const pair_pictures& pictures) {
  const cv::Size board_size(pictures.board_width, pictures.board_height);
  std::vector<cv::Point3f> board;
  for (int row = 0; row < board_size.height; ++row) {
    for (int column = 0; column < board_size.width; ++column) {
      board.emplace_back(static_cast<float>(column) * pictures.board_scale,
                         static_cast<float>(row) * pictures.board_scale, 0.0f);
    }
  }
  frames found;
  for (std::size_t i = 0; i < pictures.first.size(); ++i) {
    corners first = find_corners(pictures.first[i], board_size, found.size);
    corners second = find_corners(pictures.second[i], board_size, found.size);
    if (first.empty() || second.empty()) continue;
    found.boards.push_back(board);
    found.views[0].push_back(std::move(first));
    found.views[1].push_back(std::move(second));
  }
  return found;
}

// One frame seen through a calibrated pair, at a pose of the board before the first camera.
struct pair_residuals {
  cv::Mat values;      // 4N x 1, pixels, first camera ahead of the second
  cv::Mat derivative;  // 4N x 6, by rotation vector and translation
};

pair_residuals residuals_of(const frames& frames, std::size_t frame, const lens lenses[2],
                            const cv::Mat& rotation, const cv::Mat& translation,
                            const cv::Mat& pose) {
  cv::Mat r2, t2, dr_dr, dr_dt, r_rest, t_rest, dt_dr, dt_dt;
  cv::composeRT(pose.rowRange(0, 3), pose.rowRange(3, 6), rotation, translation, r2, t2, dr_dr,
                dr_dt, r_rest, t_rest, dt_dr, dt_dt);
  corners seen[2];
  cv::Mat by_pose[2];
  cv::projectPoints(frames.boards[frame], pose.rowRange(0, 3), pose.rowRange(3, 6),
                    lenses[0].matrix, lenses[0].distortion, seen[0], by_pose[0]);
  cv::projectPoints(frames.boards[frame], r2, t2, lenses[1].matrix, lenses[1].distortion, seen[1],
                    by_pose[1]);
  const cv::Mat by_r2 = by_pose[1].colRange(0, 3);
  const cv::Mat by_t2 = by_pose[1].colRange(3, 6);
  cv::Mat second_by_pose;
  cv::hconcat(by_r2 * dr_dr + by_t2 * dt_dr, by_r2 * dr_dt + by_t2 * dt_dt, second_by_pose);

  pair_residuals result;
  cv::vconcat(by_pose[0].colRange(0, 6), second_by_pose, result.derivative);
  for (int camera = 0; camera < 2; ++camera) {
    for (std::size_t i = 0; i < seen[camera].size(); ++i) {
      const cv::Point2f off = frames.views[camera][frame][i] - seen[camera][i];
      result.values.push_back(static_cast<double>(off.x));
      result.values.push_back(static_cast<double>(off.y));
    }
  }
  return result;
}

// Mean length of the residuals at the best pose of each board. cv::stereoCalibrate keeps its
// poses to itself, so they are found anew, by Gauss-Newton steps.
double mean_residual(const frames& frames, const lens lenses[2], const cv::Mat& rotation,
                     const cv::Mat& translation) {
  constexpr int steps = 10;
  double sum = 0;
  int count = 0;
  for (std::size_t frame = 0; frame < frames.boards.size(); ++frame) {
    cv::Mat r, t, pose;
    cv::solvePnP(frames.boards[frame], frames.views[0][frame], lenses[0].matrix,
                 lenses[0].distortion, r, t);
    cv::vconcat(r, t, pose);
    pair_residuals at = residuals_of(frames, frame, lenses, rotation, translation, pose);
    for (int step = 0; step < steps; ++step) {
      cv::Mat change;
      cv::solve(at.derivative, at.values, change, cv::DECOMP_SVD);
      pose += change;
      at = residuals_of(frames, frame, lenses, rotation, translation, pose);
    }
    for (int i = 0; i < at.values.rows; i += 2, ++count) {
      sum += std::hypot(at.values.at<double>(i), at.values.at<double>(i + 1));
    }
  }
  return sum / count;
}

corner_rays rays_of(const std::vector<corners>& views, const lens& lens) {
  corners pixels;
  for (const corners& view : views) pixels.insert(pixels.end(), view.begin(), view.end());
  corners tangents;
  cv::undistortPoints(pixels, tangents, lens.matrix, lens.distortion);
  const auto count = static_cast<Eigen::Index>(pixels.size());
  corner_rays result{Eigen::Matrix2Xd(2, count), Eigen::Matrix3Xd(3, count)};
  for (Eigen::Index i = 0; i < count; ++i) {
    const cv::Point2f pixel = pixels[static_cast<std::size_t>(i)];
    const cv::Point2f tangent = tangents[static_cast<std::size_t>(i)];
    result.pixels.col(i) << pixel.x, pixel.y;
    result.rays.col(i) = Eigen::Vector3d(tangent.x, tangent.y, 1).normalized();
  }
  return result;
}

}  // namespace

opencv_pair calibrate_with_opencv(const pair_pictures& pictures) {
  const frames frames = find_frames(pictures);
  opencv_pair result;
  result.boards = static_cast<int>(frames.boards.size());
  if (result.boards < 3) return result;

  lens lenses[2];
  for (int camera = 0; camera < 2; ++camera) {
    std::vector<cv::Mat> rotations, translations;
    cv::calibrateCamera(frames.boards, frames.views[camera], frames.size, lenses[camera].matrix,
                        lenses[camera].distortion, rotations, translations);
  }
  cv::Mat rotation, translation, essential, fundamental;
  cv::stereoCalibrate(frames.boards, frames.views[0], frames.views[1], lenses[0].matrix,
                      lenses[0].distortion, lenses[1].matrix, lenses[1].distortion, frames.size,
                      rotation, translation, essential, fundamental, cv::CALIB_USE_INTRINSIC_GUESS);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      result.second_from_first(row, column) = rotation.at<double>(row, column);
    }
    result.second_origin_shift[row] = translation.at<double>(row);
  }
  for (int camera = 0; camera < 2; ++camera) {
    result.corners[camera] = rays_of(frames.views[camera], lenses[camera]);
  }
  cv::Mat rotation_vector;
  cv::Rodrigues(rotation, rotation_vector);
  result.mean_residual = mean_residual(frames, lenses, rotation_vector, translation);
  return result;
}

}  // namespace ocpan

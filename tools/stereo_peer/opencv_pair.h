#pragma once

#include <string>
#include <vector>

#include <Eigen/Core>

namespace ocpan {

// A series of chessboard pictures taken by two cameras at once.
struct pair_pictures {
  std::vector<std::string> first;   // files in the system's form, one per frame
  std::vector<std::string> second;  // files, as many as of the first camera
  int board_width = 0;              // inner corners
  int board_height = 0;             // inner corners
  float board_scale = 0;            // side of a square
};

// Where the corners that a camera saw lie, and which way OpenCV looks there.
struct corner_rays {
  Eigen::Matrix2Xd pixels;
  Eigen::Matrix3Xd rays;  // unit, camera frame: right, down, forward
};

// What OpenCV makes of a pair.
struct opencv_pair {
  int boards = 0;                       // frames whose board both cameras saw
  Eigen::Matrix3d second_from_first;    // rotation
  Eigen::Vector3d second_origin_shift;  // translation, unit of board_scale
  corner_rays corners[2];               // of both cameras
  double mean_residual = 0;             // mean length of all residuals, pixels
};

// Calibrates a pair with OpenCV alone: corners by cv::findChessboardCorners and
// cv::cornerSubPix as in our own runs, each camera by cv::calibrateCamera, then everything
// free in cv::stereoCalibrate. A frame that lacks a picture or a board is left out. Fewer
// than three boards calibrate nothing.
opencv_pair calibrate_with_opencv(const pair_pictures& pictures);

}  // namespace ocpan

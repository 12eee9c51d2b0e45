#pragma once

#include <vector>

#include <Eigen/Core>

namespace ocpan {

// A camera of a panorama project file: what its "i" line says, and what the mappings need.
struct pt_image {
  Eigen::Vector2d size = Eigen::Vector2d::Zero();       // pixels
  Eigen::Vector2d crop_size = Eigen::Vector2d::Zero();  // pixels; equals size without a crop
  Eigen::Vector4d lens = Eigen::Vector4d::Zero();       // a, b, c and d = 1 - a - b - c
  Eigen::Vector2d shear = Eigen::Vector2d::Zero();      // g, t; pixels
  Eigen::Vector2d shift = Eigen::Vector2d::Zero();      // d, e; pixels, moved by the crop
  Eigen::Matrix2d shear_matrix = Eigen::Matrix2d::Identity();
  Eigen::Matrix3d rotation = Eigen::Matrix3d::Identity();  // rig -> camera is p R, p a row
  double projection = 0;                                   // 0 rectilinear, 2 and 3 fisheye
  double hfov = 0;                                         // radians
  double yaw = 0;                                          // radians
  double pitch = 0;                                        // radians
  double roll = 0;                                         // radians
  // Up to this radius, in halves of the smaller side of the crop, the lens polynomial grows.
  double radius_limit = 0;
};

// A panorama project file. The start values are those of a file without a "p" line.
struct pt_project {
  Eigen::Vector2d pano_size{2000.0, 1000.0};  // pixels
  int pano_projection = 2;                    // read, and used by nothing
  double pano_hfov = 6.283185307179586;       // radians
  std::vector<pt_image> images;               // in file order
};

// Reads a project file. Its lines begin with a letter, their tokens are a letter and a
// value side by side; only "p" and "i" lines are read and unknown letters pass. A value
// that is no number reads as 0, one without text leaves the field alone.
//
//   project     the panorama's facts are replaced, images are appended; after a failure
//               those read so far stay
//   file_name   not null, either kind of slash
//
// Prints why it fails, but for an "=" where there is no first image yet. Gives an internal
// result code.
[[nodiscard]] int read_project_file(pt_project& project, const char* file_name);

}  // namespace ocpan

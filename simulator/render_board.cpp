#include "simulator/render_board.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <Eigen/Geometry>
#include <opencv2/imgproc.hpp>

#include "model/projection.h"
#include "simulator/board_poses.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix2Xd;
using Eigen::Matrix3d;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;

// Grey levels ahead of light, blur and noise.
constexpr float black = 40;
constexpr float white = 205;
constexpr float ground = 120;
constexpr float ground_texture = 6;  // deviation
constexpr int texture_grain = 24;    // pixels

constexpr int samples = 8;      // along each side of a pixel that holds an edge
constexpr int strip_rows = 32;  // rows of pixels carried back at once

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Rays of pixels. A pixel right on the distortion axis has none, so it is taken a hair
// beside it.
Matrix3Xd rays_of(const Matrix2Xd& pixels, const model_map& model) {
  Matrix3Xd rays, beside;
  unproject_points(rays, pixels, model);
  for (Index i = 0; i < rays.cols(); ++i) {
    if (std::isfinite(rays(0, i))) continue;
    const Matrix2Xd hair = pixels.col(i).array() + 1e-4;
    unproject_points(beside, hair, model);
    rays.col(i) = beside.col(0);
  }
  return rays;
}

// The plane of a board as one camera looks at it.
struct board_plane {
  board_plane(const rig_camera& camera, const board_description& board, const ModelPose& pose)
      : rotation(rotation_from_vector(pose.rotation) / board.square),
        from_board(vector_of(camera.model, C_0) - pose.translation),
        columns(board.width),
        rows(board.height) {}

  // Where a ray meets the plane, in squares from the first corner; not-a-number if it
  // doesn't.
  std::array<double, 2> meet(const Vector3d& ray) const {
    const double along = -rotation.col(2).dot(from_board) / rotation.col(2).dot(ray);
    if (!(along > 0)) return {nan, nan};
    const Vector3d point = from_board + along * ray;
    return {rotation.col(0).dot(point), rotation.col(1).dot(point)};
  }

  Matrix3d rotation;    // columns: the board's axes, divided by the square
  Vector3d from_board;  // from the board's first corner to the camera
  int columns, rows;    // inner corners
};

// The grey level of the board at a place, below 0 beside it. Squares begin at -1; the one
// left of and above the first corner is black.
float shade(const board_plane& plane, double u, double v) {
  constexpr double rim = 1 + board_margin;
  if (!(u > -rim && u < plane.columns - 1 + rim && v > -rim && v < plane.rows - 1 + rim)) {
    return -1;
  }
  if (u < -1 || u > plane.columns || v < -1 || v > plane.rows) return white;
  const int square = static_cast<int>(std::floor(u)) + static_cast<int>(std::floor(v));
  return square % 2 == 0 ? black : white;
}

// Rows of pixel corners, each with its place on the board.
struct place_strip {
  int width;  // pixel corners in a row
  std::vector<std::array<double, 2>> places;
  const std::array<double, 2>& at(int row, int column) const {
    return places[static_cast<std::size_t>(Index{row} * width + column)];
  }
};

// Carries the corners of the pixels in a region back to the board.
place_strip carry_back(const rig_camera& camera, const board_plane& plane, const cv::Rect& region) {
  place_strip strip{region.width + 1, {}};
  const Index count = Index{strip.width} * (region.height + 1);
  Matrix2Xd pixels(2, count);
  for (Index i = 0; i < count; ++i) {
    pixels(0, i) = static_cast<double>(region.x + i % strip.width) - 0.5;
    pixels(1, i) = static_cast<double>(region.y + i / strip.width) - 0.5;
  }
  const Matrix3Xd rays = rays_of(pixels, camera.model);
  strip.places.reserve(static_cast<std::size_t>(count));
  for (Index i = 0; i < count; ++i) strip.places.push_back(plane.meet(rays.col(i)));
  return strip;
}

// The mean over samples spread evenly between the four corners of a pixel.
float sampled(const board_plane& plane, const std::array<double, 2> (&corner)[4], float behind) {
  float sum = 0;
  for (int j = 0; j < samples; ++j) {
    const double down = (j + 0.5) / samples;
    for (int i = 0; i < samples; ++i) {
      const double across = (i + 0.5) / samples;
      const double place[4] = {(1 - down) * (1 - across), (1 - down) * across, down * (1 - across),
                               down * across};
      double u = 0, v = 0;
      for (int k = 0; k < 4; ++k) {
        u += place[k] * corner[k][0];
        v += place[k] * corner[k][1];
      }
      const float level = shade(plane, u, v);
      sum += level < 0 ? behind : level;
    }
  }
  return sum / (samples * samples);
}

bool in_one_square(const std::array<double, 2> (&corner)[4]) {
  for (int axis = 0; axis < 2; ++axis) {
    const double first = std::floor(corner[0][static_cast<std::size_t>(axis)]);
    for (int k = 1; k < 4; ++k) {
      if (std::floor(corner[k][static_cast<std::size_t>(axis)]) != first) return false;
    }
  }
  return true;
}

void paint_strip(cv::Mat& picture, const rig_camera& camera, const board_plane& plane,
                 const cv::Rect& region) {
  const place_strip strip = carry_back(camera, plane, region);
  for (int j = 0; j < region.height; ++j) {
    float* row = picture.ptr<float>(region.y + j) + region.x;
    for (int i = 0; i < region.width; ++i) {
      const std::array<double, 2> corner[4] = {strip.at(j, i), strip.at(j, i + 1),
                                               strip.at(j + 1, i), strip.at(j + 1, i + 1)};
      if (in_one_square(corner)) {
        const float level = shade(plane, corner[0][0], corner[0][1]);
        if (level >= 0) row[i] = level;
      } else {
        row[i] = sampled(plane, corner, row[i]);
      }
    }
  }
}

// The pixels that a board can touch: all of them unless the whole of its rim is well in
// front of the camera.
cv::Rect region_of(const rig_camera& camera, const board_description& board,
                   const ModelPose& pose) {
  const cv::Rect all(0, 0, camera.details.width, camera.details.height);
  if (!board_is_visible(camera, board, pose)) return all;
  const Matrix3Xd rim = board_outline(board);
  Eigen::ArrayXd x, y;
  project_points(x, y, rim, camera.model, pose.rotation, pose.translation);
  // A few pixels more, for between two points of the rim it may bulge.
  const int bulge = 4;
  const int left = static_cast<int>(x.minCoeff()) - bulge;
  const int top = static_cast<int>(y.minCoeff()) - bulge;
  const int right = static_cast<int>(x.maxCoeff()) + bulge;
  const int bottom = static_cast<int>(y.maxCoeff()) + bulge;
  return all & cv::Rect(left, top, right - left + 1, bottom - top + 1);
}

cv::Mat textured_ground(const cv::Size& size, cv::RNG& numbers) {
  cv::Mat coarse(size.height / texture_grain + 2, size.width / texture_grain + 2, CV_32FC1);
  numbers.fill(coarse, cv::RNG::NORMAL, ground, ground_texture);
  cv::Mat picture;
  cv::resize(coarse, picture, size, 0, 0, cv::INTER_LINEAR);
  return picture;
}

// Makes one side of the picture lighter than the other.
void light_unevenly(cv::Mat& picture, double change, cv::RNG& numbers) {
  const double angle = numbers.uniform(0.0, 2 * pi);
  const double half = std::hypot(picture.cols, picture.rows) / 2;
  const double step_x = change * std::cos(angle) / half, step_y = change * std::sin(angle) / half;
  for (int j = 0; j < picture.rows; ++j) {
    float* row = picture.ptr<float>(j);
    const double first = 1 + step_y * (j - picture.rows * 0.5) - step_x * picture.cols * 0.5;
    for (int i = 0; i < picture.cols; ++i) row[i] *= static_cast<float>(first + step_x * i);
  }
}

}  // namespace

cv::Mat field_of_view(const rig_camera& camera) {
  if (camera.details.lens != 2) return {};
  const int width = camera.details.width, height = camera.details.height;
  const Vector3d axis =
      direction_from_angles(value_of(camera.model, A_th), value_of(camera.model, A_ph));
  const double least_cosine = std::cos(std::min(pi, camera.details.hfov * pi / 360));
  cv::Mat field(height, width, CV_32FC1);
  Matrix2Xd pixels(2, width);
  for (int j = 0; j < height; ++j) {
    pixels.row(0).setLinSpaced(width, 0, width - 1);
    pixels.row(1).setConstant(j);
    const Matrix3Xd rays = rays_of(pixels, camera.model);
    float* row = field.ptr<float>(j);
    for (int i = 0; i < width; ++i) row[i] = rays.col(i).dot(axis) >= least_cosine ? 1.f : 0.f;
  }
  return field;
}

cv::Mat render_board(const rig_camera& camera, const cv::Mat& field, const board_description& board,
                     const ModelPose* pose, const rendering_options& options, std::uint64_t seed) {
  cv::RNG numbers(seed);
  cv::Mat picture = textured_ground(cv::Size(camera.details.width, camera.details.height), numbers);
  if (pose) {
    const board_plane plane(camera, board, *pose);
    const cv::Rect region = region_of(camera, board, *pose);
    for (int top = region.y; top < region.y + region.height; top += strip_rows) {
      const int rows = std::min(strip_rows, region.y + region.height - top);
      paint_strip(picture, camera, plane, cv::Rect(region.x, top, region.width, rows));
    }
  }
  light_unevenly(picture, options.uneven_light, numbers);
  if (!field.empty()) picture = picture.mul(field);
  if (options.blur > 0) cv::GaussianBlur(picture, picture, cv::Size(), options.blur);
  if (options.noise > 0) {
    cv::Mat noise(picture.size(), CV_32FC1);
    numbers.fill(noise, cv::RNG::NORMAL, 0, options.noise);
    picture += noise;
  }
  cv::Mat grey;
  picture.convertTo(grey, CV_8UC1);
  return grey;
}

}  // namespace ocpan

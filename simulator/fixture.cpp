#include "simulator/fixture.h"

#include <algorithm>
#include <cmath>

#include "model/projection.h"
#include "simulator/random_numbers.h"

namespace ocpan {
namespace {

// The ray of a pixel exactly on the lens's axis is not a number.
constexpr double off_axis = 1e-7;  // pixels

constexpr double pixel_variance = 1.0 / 12;  // of a pixel's own square, pixels squared

// The pattern position of every pixel: longitude in channel 0, latitude in channel 1.
cv::Mat2d pattern_positions(const rig_camera& camera, const fixture_description& fixture,
                            const pattern_map& pattern) {
  cv::Mat2d positions(camera.details.height, camera.details.width);
  Eigen::Matrix2Xd pixels(2, positions.cols);
  for (int y = 0; y < positions.rows; ++y) {
    for (int x = 0; x < positions.cols; ++x) pixels.col(x) << x + off_axis, y;
    const Eigen::Matrix3Xd points = seen_on_sphere(camera.model, pixels, fixture.radius_mm);
    for (int x = 0; x < positions.cols; ++x) {
      const Eigen::Vector2d cell = pattern.cell_position(points.col(x));
      positions(y, x) = {cell.x(), cell.y()};
    }
  }
  return positions;
}

// How fast a pattern coordinate changes at a pixel, cells per pixel.
double slope(const cv::Mat2d& positions, int y, int x, int channel, int period) {
  const auto difference = [&](int dy, int dx) {
    const int y0 = std::max(y - dy, 0), y1 = std::min(y + dy, positions.rows - 1);
    const int x0 = std::max(x - dx, 0), x1 = std::min(x + dx, positions.cols - 1);
    const double change = positions(y1, x1)[channel] - positions(y0, x0)[channel];
    return std::remainder(change, period) / std::max(1, (y1 - y0) + (x1 - x0));
  };
  return std::hypot(difference(0, 1), difference(1, 0));
}

// A square wave that changes its sign at every whole number, blurred: -1 to 1.
//
//   sharpness   pixels per cell / (sqrt(2) sigma)
double blurred_wave(double position, double sharpness) {
  const double line = std::round(position);
  const double edge = std::erf((position - line) * sharpness);
  return std::fmod(line, 2.0) == 0.0 ? edge : -edge;
}

// The part of the light that reaches a pixel.
double light(const cv::Size& size, int x, int y, double vignetting) {
  const double dx = (x - (size.width - 1) / 2.0) / (size.width / 2.0);
  const double dy = (y - (size.height - 1) / 2.0) / (size.height / 2.0);
  return 1 - vignetting * (dx * dx + dy * dy) / 2;
}

// How far inside the picture a place lies, pixels; for a circular one about how far inside
// its ellipse.
double distance_inside(const camera_details& details, const Eigen::Vector2d& pixel) {
  const double half_width = details.width / 2.0;
  const double half_height = details.height / 2.0;
  if (details.lens == 2) {
    const double part = std::hypot(pixel.x() / half_width - 1, pixel.y() / half_height - 1);
    return (1 - part) * std::min(half_width, half_height);
  }
  return std::min(
      {pixel.x(), pixel.y(), details.width - 1 - pixel.x(), details.height - 1 - pixel.y()});
}

// The pattern's brightness at a pixel before noise, grey values.
double brightness(const cv::Mat2d& positions, int y, int x, const pattern_map& pattern,
                  const fixture_description& fixture) {
  const double u = positions(y, x)[0];
  const double v = positions(y, x)[1];
  const double sigma = std::sqrt(fixture.blur * fixture.blur + pixel_variance);
  const double u_sharpness =
      1 / (slope(positions, y, x, 0, pattern.meridians()) * sigma * std::sqrt(2));
  const double v_sharpness =
      1 / (slope(positions, y, x, 1, 2 * pattern.meridians()) * sigma * std::sqrt(2));
  const double wave = blurred_wave(u, u_sharpness) * blurred_wave(v, v_sharpness);
  const double covered = (std::erf((v - pattern.low_line()) * v_sharpness) +
                          std::erf((pattern.high_line() - v) * v_sharpness)) /
                         2;
  const double middle = (fixture.bright + fixture.dark) / 2;
  const double swing = (fixture.bright - fixture.dark) / 2;
  return middle + swing * wave * std::max(0.0, covered);
}

}  // namespace

cv::Mat render_fixture(const rig_camera& camera, const fixture_description& fixture,
                       std::size_t stream) {
  const pattern_map pattern(fixture);
  const cv::Mat2d positions = pattern_positions(camera, fixture, pattern);
  random_numbers numbers(fixture.seed, stream);
  cv::Mat1b picture(positions.size());
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const double seen = brightness(positions, y, x, pattern, fixture) *
                          light(picture.size(), x, y, fixture.vignetting);
      const bool dark = !std::isfinite(seen) ||
                        (camera.details.lens == 2 && distance_inside(camera.details, {x, y}) < 0);
      const double value = (dark ? 0.0 : seen) + fixture.noise * numbers.normal();
      picture(y, x) = cv::saturate_cast<uchar>(value);
    }
  }
  return picture;
}

std::vector<fixture_corner> fixture_corners(const rig_camera& camera,
                                            const fixture_description& fixture) {
  constexpr double step = 0.05;        // cells, for the directions of the edges
  constexpr double same_place = 1e-6;  // of the radius
  const pattern_map pattern(fixture);
  std::vector<fixture_corner> corners;
  Eigen::ArrayXd x, y;
  Eigen::Matrix3Xd points(3, 5);
  for (int line = pattern.low_line() + 1; line < pattern.high_line(); ++line) {
    for (int meridian = 0; meridian < pattern.meridians(); ++meridian) {
      points << pattern.direction(meridian, line), pattern.direction(meridian - step, line),
          pattern.direction(meridian + step, line), pattern.direction(meridian, line - step),
          pattern.direction(meridian, line + step);
      points *= fixture.radius_mm;
      project_points(x, y, points, camera.model, Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
      const Eigen::Vector2d pixel(x[0], y[0]);
      const double inside = distance_inside(camera.details, pixel);
      if (!(inside >= 0)) continue;
      // A place outside the lens's field is clamped to its rim, where another one is seen.
      const Eigen::Vector3d seen = seen_on_sphere(camera.model, pixel, fixture.radius_mm);
      if (!((seen - points.col(0)).norm() < same_place * fixture.radius_mm)) continue;
      const Eigen::Vector2d along_u(x[2] - x[1], y[2] - y[1]);
      const Eigen::Vector2d along_v(x[4] - x[3], y[4] - y[3]);
      const double cosine = std::abs(along_u.normalized().dot(along_v.normalized()));
      corners.push_back({meridian, line, pixel, inside, std::acos(std::min(1.0, cosine)) * 180 / pi,
                         std::min(along_u.norm(), along_v.norm()) / (2 * step)});
    }
  }
  return corners;
}

}  // namespace ocpan

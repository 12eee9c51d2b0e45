#include <cmath>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "fuzz/byte_source.h"
#include "fuzz/promise.h"
#include "fuzz/quad_promises.h"
#include "production/corner_detection.h"
#include "production/corner_refinement.h"

// The input describes a small picture: checkers in any direction, blurred, with bytes of it
// laid over. Corners and quads are found in it.

namespace ocpan::fuzz {
namespace {

constexpr int largest_side = 120;  // pixels

// Checkers by two wave vectors, so that cells may be skewed and of any size.
void draw_checkers(cv::Mat& picture, byte_source& source) {
  const auto wave = [&] { return (source.byte() - 128) / 512.0; };  // half waves per pixel
  const double ux = wave(), uy = wave(), vx = wave(), vy = wave();
  const double bend = (source.byte() - 128) / 65536.0;
  const std::uint8_t dark = source.byte();
  const std::uint8_t bright = source.byte();
  for (int row = 0; row < picture.rows; ++row) {
    for (int column = 0; column < picture.cols; ++column) {
      const double scale = 1 + bend * (row + column);
      const bool even = std::fmod(std::floor(scale * (ux * column + uy * row)) +
                                      std::floor(scale * (vx * column + vy * row)),
                                  2.0) == 0;
      picture.at<std::uint8_t>(row, column) = even ? dark : bright;
    }
  }
}

void lay_over(cv::Mat& picture, byte_source& source) {
  while (!source.empty()) {
    const int x = source.below(picture.cols);
    const int y = source.below(picture.rows);
    const cv::Rect patch = cv::Rect(x, y, 1 + source.byte() % 16, 1 + source.byte() % 16) &
                           cv::Rect({0, 0}, picture.size());
    picture(patch) = source.byte();
  }
}

cv::Mat picture_of(byte_source& source) {
  const int width = 1 + source.below(largest_side);
  const int height = 1 + source.below(largest_side);
  const int blur = source.byte() % 4;
  cv::Mat picture(height, width, CV_8UC1);
  draw_checkers(picture, source);
  lay_over(picture, source);
  if (blur > 0) cv::GaussianBlur(picture, picture, cv::Size(5, 5), 0.5 * blur);
  return picture;
}

void must_be_sound(const std::vector<prod_corner>& corners, const cv::Mat& picture) {
  for (const prod_corner& corner : corners) {
    must_hold(corner.x >= 0 && corner.x < picture.cols && corner.y >= 0 && corner.y < picture.rows,
              "a corner lies in the picture");
    must_hold(std::abs(std::hypot(corner.e1_x, corner.e1_y) - 1) < 1e-9 &&
                  std::abs(std::hypot(corner.e2_x, corner.e2_y) - 1) < 1e-9,
              "an edge has a direction");
  }
}

}  // namespace

void run_quad_pictures(input bytes) {
  byte_source source(bytes);
  const cv::Mat picture = picture_of(source);
  corner_scratch scratch;
  const std::vector<cv::Point2d> candidates = detect_corner_candidates(picture, scratch);
  for (const cv::Point2d& at : candidates) {
    must_hold(at.x >= 0 && at.x < picture.cols && at.y >= 0 && at.y < picture.rows,
              "a candidate lies in the picture");
  }
  const std::vector<prod_corner> corners = refine_corners(picture, candidates);
  must_hold(corners.size() <= candidates.size(), "a corner was a candidate");
  must_be_sound(corners, picture);
  must_classify_quads(picture, must_build_quads(corners), corners);
}

}  // namespace ocpan::fuzz

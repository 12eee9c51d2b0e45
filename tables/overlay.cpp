#include "tables/overlay.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "platform/text_file.h"
#include "src/console.h"

namespace ocpan {
namespace {

// Rows that are mapped at a time, so that the two maps stay in the cache.
constexpr int band_rows = 16;

bool size_allowed(int size) { return size > 16 && size <= 16384; }

// The unit vectors of the output's columns. Angles are computed in double precision, their
// sines and cosines in single.
struct column_directions {
  std::vector<float> cosine;
  std::vector<float> sine;
};

column_directions directions_of_columns(int width) {
  const double pi = std::acos(-1.0);
  column_directions directions{std::vector<float>(width), std::vector<float>(width)};
  for (int i = 0; i < width; ++i) {
    const float angle = static_cast<float>(2.0 * pi * (width / 4 + i) / width);
    directions.cosine[i] = std::cos(angle);
    directions.sine[i] = std::sin(angle);
  }
  return directions;
}

// Where to sample the square picture for the rows of a band, the first of which is row
// first_row of the output.
void fill_maps(const column_directions& directions, int centre, double step, int first_row,
               cv::Mat& map_x, cv::Mat& map_y) {
  for (int j = 0; j < map_x.rows; ++j) {
    const float radius = static_cast<float>(centre - (first_row + j) * step);
    float* const x = map_x.ptr<float>(j);
    float* const y = map_y.ptr<float>(j);
    for (int i = 0; i < map_x.cols; ++i) {
      x[i] = directions.cosine[i] * radius + static_cast<float>(centre);
      y[i] = directions.sine[i] * radius + static_cast<float>(centre);
    }
  }
}

cv::Mat unroll(const cv::Mat& square, int width, int height) {
  const int centre = square.cols / 2;
  const double step = (square.cols * 0.5) / height;
  const column_directions directions = directions_of_columns(width);
  cv::Mat rectangle(height, width, CV_8UC3);
  cv::Mat map_x(band_rows, width, CV_32FC1);
  cv::Mat map_y(band_rows, width, CV_32FC1);
  for (int first = 0; first < height; first += band_rows) {
    const int last = std::min(first + band_rows, height);
    cv::Mat band_x = map_x.rowRange(0, last - first);
    cv::Mat band_y = map_y.rowRange(0, last - first);
    fill_maps(directions, centre, step, first, band_x, band_y);
    cv::remap(square, rectangle.rowRange(first, last), band_x, band_y, cv::INTER_LINEAR,
              cv::BORDER_CONSTANT, cv::Scalar(0, 0, 0, 0));
  }
  return rectangle;
}

}  // namespace

int create_overlay(const char* input_file, const char* output_file, int width, int height) {
  if (!size_allowed(width) || !size_allowed(height)) {
    // Says 16 though 16 is refused: callers know the text.
    print_line("Width (", width, ") and height (", height, ") Range:16-16384");
    return OCPAN_INVALID;
  }
  if (!input_file || !output_file) return OCPAN_INVALID;

  std::ifstream in = open_input(input_file);
  if (!in) {
    print_line("Couldn't open: ", input_file);
    return OCPAN_INPUT;
  }
  // Creates or empties the file; that it can't be is wanted to go unnoticed.
  std::ofstream out = open_output(output_file);

  const cv::Mat square = cv::imread(native_path(input_file), cv::IMREAD_COLOR);
  if (square.empty()) {
    print_line("Couldn't open: ", input_file);
    return OCPAN_INPUT;
  }
  if (square.cols != square.rows) {
    print_line("Width (", square.cols, ") and height (", square.rows, ") must be the same");
    return OCPAN_INVALID;
  }
  cv::imwrite(native_path(output_file), unroll(square, width, height));
  return OCPAN_SUCCESS;
}

}  // namespace ocpan

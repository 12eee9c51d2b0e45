#include "production/corner_detection.h"

#include <algorithm>
#include <array>

#include <opencv2/imgproc.hpp>

namespace ocpan {
namespace {

constexpr std::array<int, 4> radii = {5, 7, 9, 13};  // of the response, pixels
constexpr int peak_reach = 3;                        // pixels: a peak is the largest of 7 by 7
constexpr int patch_reach = 5;                       // pixels
constexpr double least_sum = 800.0;                  // of the response in a patch

// The pixels at most reach away in x and y, clipped to an image of that size.
cv::Rect around(int x, int y, int reach, const cv::Size& size) {
  return cv::Rect(x - reach, y - reach, 2 * reach + 1, 2 * reach + 1) & cv::Rect({0, 0}, size);
}

bool is_peak(const cv::Mat1f& response, int x, int y) {
  const cv::Rect reach = around(x, y, peak_reach, response.size());
  for (int row = reach.y; row < reach.br().y; ++row) {
    const float* values = response[row];
    for (int column = reach.x; column < reach.br().x; ++column) {
      if (values[column] > response(y, x)) return false;
    }
  }
  return true;
}

// Appends the centre of gravity of the response around a peak, if there is enough of it.
void append_candidate(std::vector<cv::Point2d>& candidates, const cv::Mat1f& response, int x,
                      int y) {
  const cv::Rect patch = around(x, y, patch_reach, response.size());
  double sum = 0;
  double sum_x = 0;
  double sum_y = 0;
  for (int row = patch.y; row < patch.br().y; ++row) {
    for (int column = patch.x; column < patch.br().x; ++column) {
      const double value = response(row, column);
      sum += value;
      sum_x += value * column;
      sum_y += value * row;
    }
  }
  if (sum < least_sum) return;
  candidates.emplace_back(sum_x / sum, sum_y / sum);
}

}  // namespace

std::vector<cv::Point2d> detect_corner_candidates(const cv::Mat& picture, corner_scratch& scratch) {
  cv::GaussianBlur(picture, scratch.smoothed, cv::Size(5, 5), 1.0, 1.0, cv::BORDER_REFLECT_101);
  scratch.smoothed.convertTo(scratch.picture, CV_32F);
  scratch.maximum.create(picture.size());
  scratch.maximum.setTo(0.0F);
  prepare_response(scratch.picture, radii.back(), scratch);
  for (const int radius : radii) {
    raise_to_response(scratch.maximum, scratch.picture, radius, scratch);
  }

  std::vector<cv::Point2d> candidates;
  for (int y = 0; y < picture.rows; ++y) {
    const float* row = scratch.maximum[y];
    for (int x = 0; x < picture.cols; ++x) {
      if (row[x] >= response_floor && is_peak(scratch.maximum, x, y)) {
        append_candidate(candidates, scratch.maximum, x, y);
      }
    }
  }
  return candidates;
}

}  // namespace ocpan

#include "production/corner_response.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include <opencv2/imgproc.hpp>

#include "model/parameters.h"
#include "src/round_half_away.h"

namespace ocpan {
namespace {

constexpr int ring_samples = 16;
using ring = std::array<const float*, ring_samples>;

// Where the ring samples of the first pixel of the first row lie in the padded picture.
std::array<cv::Point, ring_samples> ring_offsets(int radius) {
  std::array<cv::Point, ring_samples> offsets;
  for (int n = 0; n < ring_samples; ++n) {
    const double angle = n * pi / 8;
    offsets[static_cast<std::size_t>(n)] = {
        radius + static_cast<int>(round_half_away(radius * std::cos(angle))),
        radius + static_cast<int>(round_half_away(radius * std::sin(angle)))};
  }
  return offsets;
}

ring ring_of_row(const cv::Mat1f& padded, const std::array<cv::Point, ring_samples>& offsets,
                 int row) {
  ring samples;
  for (std::size_t n = 0; n < samples.size(); ++n) {
    samples[n] = padded[row + offsets[n].y] + offsets[n].x;
  }
  return samples;
}

// The response of one row. Every sum stays in single precision and in this order.
void respond(float* __restrict out, const ring& i, const float* neighbourhood, const float* local,
             int width) {
  for (int x = 0; x < width; ++x) {
    float sum = std::abs(i[0][x] + i[8][x] - i[4][x] - i[12][x]) +
                std::abs(i[1][x] + i[9][x] - i[5][x] - i[13][x]) +
                std::abs(i[2][x] + i[10][x] - i[6][x] - i[14][x]);
    sum -= std::abs(i[0][x] - i[8][x]);
    sum -= std::abs(i[1][x] - i[9][x]);
    sum -= std::abs(i[2][x] - i[10][x]);
    sum -= std::abs(i[3][x] - i[11][x]);
    sum -= std::abs(i[4][x] - i[12][x]);
    sum -= std::abs(i[5][x] - i[13][x]);
    sum -= std::abs(i[6][x] - i[14][x]);
    sum -= 16.0F * std::abs(neighbourhood[x] - local[x]);
    out[x] = sum > response_floor ? sum : 0.0F;
  }
}

// Raises one row to its response where one of the eight neighbours has a response too.
// The rows of the response are readable one pixel beyond both ends.
void raise_connected(float* maximum, const float* above, const float* row, const float* below,
                     int width) {
  for (int x = 0; x < width; ++x) {
    if (row[x] == 0.0F) continue;
    const bool connected = above[x - 1] != 0.0F || above[x] != 0.0F || above[x + 1] != 0.0F ||
                           row[x - 1] != 0.0F || row[x + 1] != 0.0F || below[x - 1] != 0.0F ||
                           below[x] != 0.0F || below[x + 1] != 0.0F;
    if (connected) maximum[x] = std::max(maximum[x], row[x]);
  }
}

}  // namespace

void set_local_mean(const cv::Mat1f& picture, corner_scratch& scratch) {
  cv::filter2D(picture, scratch.local_mean, -1, scratch.plus, cv::Point(-1, -1), 0,
               cv::BORDER_REFLECT_101);
}

void raise_to_response(cv::Mat1f& maximum, const cv::Mat1f& picture, int radius,
                       corner_scratch& scratch) {
  auto& [padded, neighbourhood] = scratch.of_radius[radius];
  cv::copyMakeBorder(picture, padded, radius, radius, radius, radius, cv::BORDER_REPLICATE);
  cv::blur(picture, neighbourhood, cv::Size(2 * radius + 1, 2 * radius + 1), cv::Point(-1, -1),
           cv::BORDER_REFLECT_101);

  // Three rows are enough to know a row's neighbours, so they never leave the cache.
  const int width = picture.cols;
  const std::size_t stride = static_cast<std::size_t>(width) + 2;
  scratch.rows.assign(3 * stride, 0.0F);
  const auto response_row = [&](int y) {
    return &scratch.rows[static_cast<std::size_t>((y + 1) % 3) * stride + 1];
  };
  const auto offsets = ring_offsets(radius);
  for (int y = 0; y <= picture.rows; ++y) {
    if (y < picture.rows) {
      respond(response_row(y), ring_of_row(padded, offsets, y), neighbourhood[y],
              scratch.local_mean[y], width);
    } else {
      std::fill_n(response_row(y), width, 0.0F);
    }
    if (y > 0) {
      raise_connected(maximum[y - 1], response_row(y - 2), response_row(y - 1), response_row(y),
                      width);
    }
  }
}

cv::Mat1d corner_response(const cv::Mat1f& picture, int radius, corner_scratch& scratch) {
  cv::Mat1f response = cv::Mat1f::zeros(picture.size());
  set_local_mean(picture, scratch);
  raise_to_response(response, picture, radius, scratch);
  return cv::Mat1d(response);
}

}  // namespace ocpan

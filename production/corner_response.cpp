#include "production/corner_response.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include <opencv2/imgproc.hpp>

#include "model/parameters.h"
#include "platform/vector_clones.h"
#include "src/round_half_away.h"

namespace ocpan {
namespace {

constexpr int ring_samples = 16;
using ring = std::array<const float*, ring_samples>;

// Where the ring samples of the first pixel of the first row lie in the padded picture.
std::array<cv::Point, ring_samples> ring_offsets(int radius, int padding) {
  std::array<cv::Point, ring_samples> offsets;
  for (int n = 0; n < ring_samples; ++n) {
    const double angle = n * pi / 8;
    offsets[static_cast<std::size_t>(n)] = {
        padding + static_cast<int>(round_half_away(radius * std::cos(angle))),
        padding + static_cast<int>(round_half_away(radius * std::sin(angle)))};
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
OCPAN_VECTOR_CLONES void respond(float* __restrict out, const ring& i, const float* neighbourhood,
                                 const float* local, int width) {
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
// Responses are never negative, so neither is maximum, and a sum of neighbours tells whether
// there is one: without a branch, several pixels at a time. The rows of the response are
// readable one pixel beyond both ends.
OCPAN_VECTOR_CLONES void raise_connected(float* __restrict maximum, const float* above,
                                         const float* row, const float* below, int width) {
  for (int x = 0; x < width; ++x) {
    const float neighbours = above[x - 1] + above[x] + above[x + 1] + row[x - 1] + row[x + 1] +
                             below[x - 1] + below[x] + below[x + 1];
    const float own = row[x];
    const float response = neighbours > 0.0F ? own : 0.0F;
    const float largest = maximum[x];
    maximum[x] = largest < response ? response : largest;
  }
}

}  // namespace

void prepare_response(const cv::Mat1f& picture, int most_radius, corner_scratch& scratch) {
  scratch.padding = most_radius;
  cv::copyMakeBorder(picture, scratch.padded, most_radius, most_radius, most_radius, most_radius,
                     cv::BORDER_REPLICATE);
  cv::filter2D(picture, scratch.local_mean, -1, scratch.plus, cv::Point(-1, -1), 0,
               cv::BORDER_REFLECT_101);
}

void raise_to_response(cv::Mat1f& maximum, const cv::Mat1f& picture, int radius,
                       corner_scratch& scratch) {
  cv::blur(picture, scratch.neighbourhood, cv::Size(2 * radius + 1, 2 * radius + 1),
           cv::Point(-1, -1), cv::BORDER_REFLECT_101);

  // Three rows are enough to know a row's neighbours, so they never leave the cache.
  const int width = picture.cols;
  const std::size_t stride = static_cast<std::size_t>(width) + 2;
  scratch.rows.assign(3 * stride, 0.0F);
  const auto response_row = [&](int y) {
    return &scratch.rows[static_cast<std::size_t>((y + 1) % 3) * stride + 1];
  };
  const auto offsets = ring_offsets(radius, scratch.padding);
  for (int y = 0; y <= picture.rows; ++y) {
    if (y < picture.rows) {
      respond(response_row(y), ring_of_row(scratch.padded, offsets, y), scratch.neighbourhood[y],
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
  prepare_response(picture, radius, scratch);
  raise_to_response(response, picture, radius, scratch);
  return cv::Mat1d(response);
}

}  // namespace ocpan

#include "fuzz/mask_pictures.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace ocpan::fuzz {
namespace {

constexpr int largest_side = 300;  // a round mask of this size has more than 128 corners

void fill_with_bytes(cv::Mat& mask, input bytes) {
  if (bytes.empty()) return;
  std::size_t k = 0;
  std::generate_n(mask.data, mask.total(), [&] { return bytes[k++ % bytes.size()]; });
}

void fill_with_spans(cv::Mat& mask, byte_source& source) {
  for (int row = 0; row < mask.rows && !source.empty(); ++row) {
    const int first = source.below(mask.cols);
    const int last = source.below(mask.cols);
    if (first <= last) mask.row(row).colRange(first, last + 1) = 255;
  }
}

void fill_with_points(cv::Mat& mask, byte_source& source) {
  while (!source.empty()) {
    const int row = source.below(mask.rows);
    const int column = source.below(mask.cols);
    mask.at<std::uint8_t>(row, column) = static_cast<std::uint8_t>(source.byte() | 1);
  }
}

void fill_with_ellipse(cv::Mat& mask, byte_source& source) {
  const cv::Point centre(source.below(mask.cols), source.below(mask.rows));
  const cv::Size axes(source.below(largest_side), source.below(largest_side));
  cv::ellipse(mask, centre, axes, source.byte(), 0, 360, cv::Scalar(source.byte()), cv::FILLED);
}

std::string encoded(const cv::Mat& mask, const char* ending, const std::vector<int>& settings) {
  std::vector<std::uint8_t> bytes;
  cv::imencode(ending, mask, bytes, settings);
  return {bytes.begin(), bytes.end()};
}

std::string sound_bytes(const cv::Mat& mask, int format) {
  if (format == 0) return encoded(mask, ".pgm", {cv::IMWRITE_PXM_BINARY, 1});
  if (format == 1) return encoded(mask, ".pgm", {cv::IMWRITE_PXM_BINARY, 0});
  if (format == 3) return encoded(mask, ".bmp", {});
  if (format == 4) return encoded(mask, ".png", {cv::IMWRITE_PNG_COMPRESSION, 1});
  cv::Mat colour;
  cv::cvtColor(mask, colour, cv::COLOR_GRAY2BGR);
  return encoded(colour, ".ppm", {cv::IMWRITE_PXM_BINARY, 1});
}

}  // namespace

cv::Mat make_mask(byte_source& source) {
  const int width = 1 + source.two_bytes() % largest_side;
  const int height = 1 + source.two_bytes() % largest_side;
  cv::Mat mask = cv::Mat::zeros(height, width, CV_8UC1);
  switch (source.below(4)) {
    case 0:
      fill_with_bytes(mask, source.rest());
      break;
    case 1:
      fill_with_spans(mask, source);
      break;
    case 2:
      fill_with_points(mask, source);
      break;
    default:
      fill_with_ellipse(mask, source);
  }
  return mask;
}

mask_file_bytes encode_mask(const cv::Mat& mask, byte_source& source) {
  const int kind = source.below(8);
  if (kind == 6) {
    std::string bytes = sound_bytes(mask, 0);
    bytes.resize(bytes.size() - 1 - static_cast<std::size_t>(source.byte()) % bytes.size());
    return {std::move(bytes), false};
  }
  if (kind == 7) {
    cv::Mat taller;
    cv::copyMakeBorder(mask, taller, 0, 1, 0, 0, cv::BORDER_CONSTANT);
    return {sound_bytes(taller, source.below(5)), false};
  }
  return {sound_bytes(mask, kind % 5), true};
}

}  // namespace ocpan::fuzz

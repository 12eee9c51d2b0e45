#pragma once

#include <span>

#include <opencv2/core.hpp>

namespace ocpan {

// Turns mask pictures into raw weight masks: rows of 16-bit little-endian samples without a
// header, each the pixel's weight_at, 0 to 1023.
//
//   input_files    pictures, pixels above 128 of their grey are the region; none null
//   output_files   as many, none null; replaced
//
// Ends at the first failure with an exported code. The files of earlier pictures stay; the
// failed one is removed if it is a regular file that was opened.
[[nodiscard]] int transform_masks(std::span<const char* const> input_files,
                                  std::span<const char* const> output_files);

// Writes one weight mask of a picture that is read already.
//
//   grey          CV_8UC1; without data it is refused
//   input_file    its name, for a complaint
[[nodiscard]] int write_yuv_mask(const cv::Mat& grey, const char* input_file,
                                 const char* output_file);

}  // namespace ocpan

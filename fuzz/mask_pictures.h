#pragma once

#include <string>

#include <opencv2/core.hpp>

#include "fuzz/byte_source.h"

namespace ocpan::fuzz {

// A mask of 1 to 300 pixels a side, as a fuzzer's bytes say: bytes as they come, spans in
// the rows, single pixels, or an ellipse.
cv::Mat make_mask(byte_source& source);

// A mask as a picture file in one of five formats: three kinds of PNM, BMP and PNG. Sound,
// but for a kind that is cut off and one that claims a row more than it has.
struct mask_file_bytes {
  std::string bytes;
  bool sound;
};
mask_file_bytes encode_mask(const cv::Mat& mask, byte_source& source);

}  // namespace ocpan::fuzz

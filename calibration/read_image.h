#pragma once

#include <opencv2/core/mat.hpp>

namespace ocpan {

// Reads a picture as one 8-bit grey channel of exactly the size that the caller expects.
//
//   picture         CV_8UC1, height rows of width pixels; undefined after a failure
//   file_name       either kind of slash; null is refused
//   filetype        0: any format that OpenCV decodes, turned to grey; 1 to 4: raw, a byte
//                   per pixel; 5 to 8: raw, two bytes per pixel, low byte first, of which
//                   bits 2 to 9 are kept
//   width, height   pixels; a coded picture of another size is refused, the rest of a
//                   longer raw file stays unread
//
// Prints why it fails and gives an internal result code. Safe on several threads.
[[nodiscard]] int read_image(cv::Mat& picture, const char* file_name, int filetype, int width,
                             int height);

// Decodes a picture of any format that OpenCV knows to 8-bit grey, as it is and without a
// word. Gives false if it can't be opened or decoded. Safe on several threads.
[[nodiscard]] bool decode_grey(cv::Mat& picture, const char* file_name);

}  // namespace ocpan

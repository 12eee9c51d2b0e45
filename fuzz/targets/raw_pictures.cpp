#include <opencv2/core.hpp>

#include "calibration/read_image.h"
#include "fuzz/byte_source.h"
#include "fuzz/promise.h"
#include "fuzz/scratch_folder.h"
#include "src/result_codes.h"
#include "tests/support/temp_folder.h"

// The input is a file type, a width, a height and a raw picture file.

namespace ocpan::fuzz {
namespace {

int grey_at(input file, int filetype, std::size_t pixel) {
  if (filetype <= 4) return file[pixel];
  return ((file[2 * pixel] | file[2 * pixel + 1] << 8) >> 2) & 255;
}

}  // namespace

void run_raw_pictures(input bytes) {
  byte_source source(bytes);
  const int filetype = source.below(11) - 1;
  const int width = source.two_bytes() % 300 - 2;
  const int height = source.two_bytes() % 300 - 2;
  const input file = source.rest();
  // Foreign decoders are to get pictures of ours alone.
  const std::string picture = filetype == 0 ? "P5 5 3 255\n" + text_of(file) : text_of(file);
  const std::string path = scratch_file("picture.raw");
  testing::write_file(path, picture);

  cv::Mat read;
  const int result = read_image(read, path.c_str(), filetype, width, height);
  must_be_result(map_result(result));
  if (width <= 0 || height <= 0 || filetype < 0 || filetype > 8) {
    must_hold(result == code::argument_invalid, "sizes and file types are checked");
    return;
  }
  if (filetype == 0) return;
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const bool long_enough = file.size() >= pixels * (filetype >= 5 ? 2 : 1);
  must_hold(result == (long_enough ? code::success : code::content_malformed),
            "a picture is read if all of it is there");
  if (!long_enough) return;
  must_hold(read.type() == CV_8UC1 && read.cols == width && read.rows == height,
            "a picture has its size");
  for (std::size_t k = 0; k < pixels; ++k) {
    must_hold(read.data[k] == grey_at(file, filetype, k), "a pixel has its bits");
  }
}

}  // namespace ocpan::fuzz

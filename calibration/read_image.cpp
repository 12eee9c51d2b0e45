#include "calibration/read_image.h"

#include <cstddef>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

bool is_raw(int filetype) { return filetype >= 1 && filetype <= 8; }
bool has_two_bytes(int filetype) { return filetype >= 5; }

int read_coded(cv::Mat& picture, const char* file_name) {
  if (decode_grey(picture, file_name)) return code::success;
  print_line("Error opening image file ", file_name);
  return code::content_malformed;
}

int read_raw(cv::Mat& picture, const char* file_name, int filetype, int width, int height) {
  std::ifstream in = open_input(file_name, std::ios::binary);
  if (!in) {
    print_line("Error opening file ", file_name);
    return code::content_malformed;
  }
  if (!is_raw(filetype)) {
    print_line("Filetype ", filetype, " not recognised");
    return code::argument_invalid;
  }
  const std::size_t columns = static_cast<std::size_t>(width);
  const std::size_t pixel_bytes = has_two_bytes(filetype) ? 2 : 1;
  picture.create(height, width, CV_8UC1);
  std::vector<char> bytes(columns * pixel_bytes);
  for (int j = 0; j < height; ++j) {
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!in) {
      const std::size_t i = static_cast<std::size_t>(in.gcount()) / pixel_bytes;
      print_line("File read ended too early (j=", j, ", i=", i, ", filetype=", filetype, ")");
      return code::content_malformed;
    }
    unsigned char* row = picture.ptr<unsigned char>(j);
    for (std::size_t i = 0; i < columns; ++i) {
      const unsigned low = static_cast<unsigned char>(bytes[i * pixel_bytes]);
      const unsigned high = static_cast<unsigned char>(bytes[i * pixel_bytes + pixel_bytes - 1]);
      // The bits of a wider value than ten bits are cut, it doesn't saturate.
      row[i] = static_cast<unsigned char>(pixel_bytes == 2 ? (low | high << 8) >> 2 : low);
    }
  }
  return code::success;
}

int check_picture(const cv::Mat& picture, const char* file_name, int width, int height) {
  if (picture.empty() || picture.rows != height || picture.cols != width) {
    print_line("Bad or no Image Data for file ", file_name,
               " (data=", static_cast<const void*>(picture.data), ", rows=", picture.rows,
               ", cols=", picture.cols, ", width=", width, ", height=", height, ")");
    return code::input_unusable;
  }
  if (picture.type() != CV_8UC1) {
    print_line("Unexpected data type ", picture.type(), " for file ", file_name);
    return code::content_malformed;
  }
  return code::success;
}

}  // namespace

bool decode_grey(cv::Mat& picture, const char* file_name) {
  try {
    const cv::Mat colour = cv::imread(native_path(file_name), cv::IMREAD_COLOR);
    if (colour.empty()) return false;
    cv::cvtColor(colour, picture, cv::COLOR_BGR2GRAY);
    return true;
  } catch (...) {
    // OpenCV throws on some of what it can't decode, on a header of 60,000 by 60,000 for one.
    return false;
  }
}

int read_image(cv::Mat& picture, const char* file_name, int filetype, int width, int height) {
  if (!file_name) {
    print_line("No filename was given");
    return code::argument_invalid;
  }
  if (width <= 0 || height <= 0) {
    print_line("Width (", width, ") and height (", height,
               ") must be greater than zero for file: ", file_name);
    return code::argument_invalid;
  }
  const int read = filetype == 0 ? read_coded(picture, file_name)
                                 : read_raw(picture, file_name, filetype, width, height);
  return read == code::success ? check_picture(picture, file_name, width, height) : read;
}

}  // namespace ocpan

#include "tables/mask_transform.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "common/alg_lib.h"
#include "include/oc_pan_cal.h"
#include "platform/file_kind.h"
#include "platform/native_path.h"
#include "src/console.h"
#include "tables/weight_map.h"

namespace ocpan {
namespace {

constexpr std::uint32_t weight_bits = 10;

// Prints a complaint with the place it comes from, under the export's name.
void complain(const char* message, int line = __builtin_LINE()) {
  ALG_LIB_PrintTrace(message, "oc_pan_cal", "ocPAN_MaskTransform", line);
}

// An open output file. Closes it, and removes it if it is a regular file and keep() wasn't
// called.
class mask_file {
 public:
  explicit mask_file(const char* name)
      : name_(native_path(name)), buffer_(buffer_bytes), file_(std::fopen(name_.c_str(), "wb")) {
    if (file_) std::setvbuf(file_, buffer_.data(), _IOFBF, buffer_.size());
  }
  ~mask_file() {
    if (!file_) return;
    std::fclose(file_);
    if (!kept_) remove_regular_file(name_);
  }
  mask_file(const mask_file&) = delete;
  mask_file& operator=(const mask_file&) = delete;

  std::FILE* get() const { return file_; }  // null if it couldn't be opened
  void keep() { kept_ = true; }

 private:
  // A row of a mask is larger than the C library's own buffer, and would be two writes.
  static constexpr std::size_t buffer_bytes = 1 << 16;

  std::string name_;
  std::vector<char> buffer_;
  std::FILE* file_;
  bool kept_ = false;
};

struct free_block {
  void operator()(void* block) const { std::free(block); }
};

// The grey of a picture file; empty if it can't be decoded. OpenCV throws on some headers,
// such as sizes beyond its limits: that is no picture either.
cv::Mat read_grey(const char* name) {
  try {
    cv::Mat picture = cv::imread(native_path(name), cv::IMREAD_COLOR);
    if (!picture.empty()) cv::cvtColor(picture, picture, cv::COLOR_BGR2GRAY);
    return picture;
  } catch (...) {
    return {};
  }
}

void fill_luminance(const weight_map& map, const YUV_PICTURE& picture) {
  auto* samples = reinterpret_cast<std::uint16_t*>(picture.pVirAddr[Y_INDEX]);
  for (int row = 0; row < map.distance.rows; ++row, samples += map.distance.cols) {
    for (int column = 0; column < map.distance.cols; ++column) {
      samples[column] = static_cast<std::uint16_t>(weight_at(map, row, column));
    }
  }
}

}  // namespace

int write_yuv_mask(const cv::Mat& grey, const char* input_file, const char* output_file) {
  if (grey.empty()) {
    print_line("Bad or no Image Data for file ", input_file,
               " (data=", static_cast<const void*>(grey.data), ", rows=", grey.rows,
               ", cols=", grey.cols, ", width=", grey.cols, ", height=", grey.rows, ")");
    return OCPAN_INPUT;
  }
  const weight_map map = make_weight_map(grey);

  mask_file out(output_file);
  if (!out.get()) {
    complain("Can't open output file\n");
    return OCPAN_OUTPUT;
  }
  YUV_PICTURE picture{};
  if (ALG_LIB_InitYuvMemEx(&picture, static_cast<std::uint32_t>(grey.cols),
                           static_cast<std::uint32_t>(grey.rows), PIXEL_FORMAT_YUV_400,
                           weight_bits) != 0) {
    complain("Can't alloc memory\n");
    return OCPAN_OUTPUT;
  }
  const std::unique_ptr<void, free_block> planes(picture.pVirAddr[A_INDEX]);
  fill_luminance(map, picture);
  // A full disk may show only when the C library's buffer is flushed.
  if (ALG_LIB_WriteOneFrameEx(&picture, weight_bits, out.get()) != 0 ||
      std::fflush(out.get()) != 0) {
    complain("Can't write yuv mask\n");
    return OCPAN_INPUT;
  }
  out.keep();
  return OCPAN_SUCCESS;
}

int transform_masks(std::span<const char* const> input_files,
                    std::span<const char* const> output_files) {
  for (std::size_t i = 0; i < input_files.size(); ++i) {
    const cv::Mat grey = read_grey(input_files[i]);
    if (grey.empty()) {
      print_line("Error opening image file ");
      return OCPAN_MALFORMED;
    }
    const int result = write_yuv_mask(grey, input_files[i], output_files[i]);
    if (result != OCPAN_SUCCESS) return result;
  }
  return OCPAN_SUCCESS;
}

}  // namespace ocpan

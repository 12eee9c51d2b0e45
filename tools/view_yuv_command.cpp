#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>
#include <opencv2/imgcodecs.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "tools/messages.h"
#include "tools/picture_output.h"

namespace ocpan {
namespace {

struct view_options {
  std::string file;
  int width = 0;
  int height = 0;
  std::string out;
};

constexpr int largest_weight = 1023;

constexpr const char* footer =
    R"(Makes a raw mask visible: weight 0 is black, 1023 white. WIDTH and HEIGHT are those of
the picture that the mask was made from.

Examples:
  oc_pan view-yuv mask_0.yuv 1920 1080 seen.png

Exit codes:
  0    done, OUT is written
  2    MASK can't be opened
  3    OUT can't be written
  4    MASK hasn't the size of such a mask
  64   wrong usage
  255  internal failure)";

// A weight as a grey level, to the nearest. Samples beyond 10 bits are white.
unsigned char grey_of(int weight) {
  return static_cast<unsigned char>((std::min(weight, largest_weight) * 255 + largest_weight / 2) /
                                    largest_weight);
}

// Reads the rows of a mask as grey levels, and counts the samples beyond 10 bits. Gives
// false if reading fails.
bool read_mask(std::ifstream& in, cv::Mat& picture, std::int64_t& beyond) {
  std::string row(static_cast<std::size_t>(picture.cols) * 2, '\0');
  for (int y = 0; y < picture.rows; ++y) {
    if (!in.read(row.data(), static_cast<std::streamsize>(row.size()))) return false;
    for (int x = 0; x < picture.cols; ++x) {
      const std::size_t at = static_cast<std::size_t>(x) * 2;
      const int low = static_cast<unsigned char>(row[at]);
      const int high = static_cast<unsigned char>(row[at + 1]);
      const int weight = low | high << 8;
      if (weight > largest_weight) ++beyond;
      picture.at<unsigned char>(y, x) = grey_of(weight);
    }
  }
  return true;
}

int view(const view_options& options) {
  const std::string name = native_path(options.file);
  if (const std::string problem = why_not_picture_output(options.out, {&options.file, 1});
      !problem.empty()) {
    complain(problem);
    return OCPAN_OUTPUT;
  }
  std::ifstream in = open_input(options.file, std::ios::binary);
  std::error_code failure;
  const std::uintmax_t size = std::filesystem::file_size(name, failure);
  if (!in || failure) {
    complain(name, " can't be opened; name a mask file that is there and may be read");
    return OCPAN_INPUT;
  }
  const std::uintmax_t expected = std::uintmax_t{2} * static_cast<std::uintmax_t>(options.width) *
                                  static_cast<std::uintmax_t>(options.height);
  if (size != expected) {
    complain(name, " holds ", size, " bytes, a mask of ", options.width, " by ", options.height,
             " has ", expected, "; give the size of the picture it was made from");
    return OCPAN_MALFORMED;
  }
  cv::Mat picture(options.height, options.width, CV_8UC1);
  std::int64_t beyond = 0;
  if (!read_mask(in, picture, beyond)) {
    complain(name, " couldn't be read to its end; see that nobody else writes it");
    return OCPAN_INPUT;
  }
  if (beyond > 0) {
    complain("warning: ", name, " has ", beyond, " samples above ", largest_weight,
             ", shown white; it may be no mask");
  }
  if (!cv::imwrite(native_path(options.out), picture)) {
    complain(native_path(options.out), " couldn't be written; free space on its disk");
    return OCPAN_OUTPUT;
  }
  print_line("Picture written: ", native_path(options.out));
  return OCPAN_SUCCESS;
}

}  // namespace

void add_view_yuv_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<view_options>();
  CLI::App* command = tool.add_subcommand("view-yuv", "Make a picture of a raw weight mask");
  command->add_option("MASK", options->file, "A raw mask")->type_name("FILE")->required();
  command->add_option("WIDTH", options->width, "The mask's pixels per row")
      ->type_name("PIXELS")
      ->check(CLI::PositiveNumber)
      ->required();
  command->add_option("HEIGHT", options->height, "The mask's rows")
      ->type_name("PIXELS")
      ->check(CLI::PositiveNumber)
      ->required();
  command->add_option("OUT", options->out, "The picture to write, .png say")
      ->type_name("FILE")
      ->required();
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = view(*options); });
}

}  // namespace ocpan

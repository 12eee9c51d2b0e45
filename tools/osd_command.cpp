#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "src/console.h"
#include "tools/library_result.h"
#include "tools/messages.h"
#include "tools/picture_output.h"

namespace ocpan {
namespace {

struct osd_options {
  std::string input;
  std::string output;
  int width = 0;
  int height = 0;
};

constexpr const char* footer =
    R"(Unrolls a square picture: columns sweep the full circle, rows go from the circle that
touches the picture's sides to its centre. The format follows from OUTPUT's ending.

Examples:
  oc_pan osd logo.png overlay.png 3840 240
  oc_pan osd logo.jpg overlay.bmp 1024 128

Exit codes:
  0    done, OUTPUT is written
  2    INPUT can't be opened, or holds no picture
  3    OUTPUT can't be written
  6    INPUT isn't square, or the size isn't 17 to 16384 each way
  64   wrong usage
  255  internal failure)";

// What the library leaves of an output that it emptied and then wrote nothing to.
bool is_empty_file(const std::string& name) {
  std::error_code failure;
  return std::filesystem::is_regular_file(name, failure) &&
         std::filesystem::file_size(name, failure) == 0;
}

const char* advice_on(int result) {
  if (result == OCPAN_INPUT) return "; name a picture that is there and can be read";
  if (result == OCPAN_INVALID) return "; crop the picture to a square, and see --help for the size";
  return "";
}

int make_overlay(const osd_options& options) {
  if (const std::string problem = why_not_picture_output(options.output, {&options.input, 1});
      !problem.empty()) {
    complain(problem);
    return OCPAN_OUTPUT;
  }
  const int result =
      ocPAN_CreateOsd(options.input.c_str(), options.output.c_str(), options.width, options.height);
  const std::string output = native_path(options.output);
  const bool left_empty = is_empty_file(output);
  if (left_empty) {
    std::error_code ignored;
    std::filesystem::remove(output, ignored);
  }
  if (result != OCPAN_SUCCESS) {
    complain("the overlay ended with ", result, ": ", meaning_of(result), advice_on(result));
    return result & 0xFF;
  }
  if (left_empty) {
    complain(output, " couldn't be written; free space on its disk");
    return OCPAN_OUTPUT;
  }
  print_line("Overlay written: ", output);
  return OCPAN_SUCCESS;
}

}  // namespace

void add_osd_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<osd_options>();
  CLI::App* command =
      tool.add_subcommand("osd", "Unroll a square picture into an on-screen overlay");
  command->add_option("INPUT", options->input, "A square picture")->type_name("FILE")->required();
  command->add_option("OUTPUT", options->output, "The overlay picture")
      ->type_name("FILE")
      ->required();
  command->add_option("WIDTH", options->width, "Of the overlay, 17 to 16384")
      ->type_name("PIXELS")
      ->required();
  command->add_option("HEIGHT", options->height, "Of the overlay, 17 to 16384")
      ->type_name("PIXELS")
      ->required();
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = make_overlay(*options); });
}

}  // namespace ocpan

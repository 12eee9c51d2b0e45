#include <array>
#include <chrono>
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <opencv2/core/utility.hpp>

#include "include/oc_pan_cal.h"
#include "src/console.h"
#include "tools/boards/rig_output.h"
#include "tools/common_options.h"
#include "tools/evaluate/evaluate_pictures.h"
#include "tools/messages.h"
#include "tools/report/input_files.h"
#include "tools/report/report_content.h"
#include "tools/report/thumbnails.h"
#include "tools/text_output.h"

namespace ocpan {
namespace {

constexpr const char* footer =
    R"(The report is one HTML file that needs nothing but itself: open it in any browser, print it
or send it. It tells how well CALIBRATION explains the boards in the pictures of CONFIG, which
may be others than it was made from: the verdict for each camera and pair, where the boards
were, the residuals over the picture, the rig from above and from the side, the pictures
themselves. The verdicts are those of oc_pan evaluate.

Examples:
  oc_pan report rig.cal rig.txt --out report.html
  oc_pan report rig.cal other_pictures.txt --out report.html --quiet

Exit codes:
  0    good, the report is written
  2    an input can't be opened
  3    the report can't be written
  4    the calibration or the configuration is malformed
  6    a value is out of range, or the cameras of the two don't agree
  10   doubtful, the report is written
  11   unusable, the report is written
  64   wrong usage
  255  internal failure)";

struct report_options {
  std::string calibration;
  std::string configuration;
  std::string out;
  bool quiet = false;
};

std::string versions() {
  std::array<char, 128> library = {};
  if (ocPAN_Version(library.data()) != OCPAN_SUCCESS) library[0] = '?';
  return std::string("oc_pan ") + OCPAN_TOOL_VERSION + "\nliboc_pan_cal " + library.data() +
         "\nOpenCV " + cv::getVersionString();
}

int run_report(const report_options& options) {
  if (const std::string reason =
          why_not_rig_output(options.out, options.calibration, options.configuration);
      !reason.empty()) {
    complain("--out: ", reason);
    return OCPAN_OUTPUT;
  }
  report_content content;
  content.calibration = options.calibration;
  if (const int result =
          read_calibrated_pictures(content.input, options.calibration, options.configuration)) {
    return result & 0xFF;
  }
  pictures_evaluation evaluated = evaluate_pictures(content.input);
  content.quality = std::move(evaluated.found);
  content.uncertainty = std::move(evaluated.uncertainty);
  content.every_picture = every_picture(content.input);
  content.thumbnails =
      make_thumbnails(content.input.pictures, content.every_picture, content.quality);
  content.inputs = input_files(options.calibration, options.configuration, content.every_picture);
  content.versions = versions();
  content.made_at =
      time_text(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
  if (!write_text(options.out, report_page(content), std::ios::binary)) return OCPAN_OUTPUT;
  if (!options.quiet) print_line(word_of(content.quality.judged), ", report ", options.out);
  return exit_code_of(content.quality.judged);
}

}  // namespace

void add_report_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<report_options>();
  CLI::App* command = tool.add_subcommand(
      "report", "Write an HTML page of how good a calibration is on pictures of boards");
  command->add_option("CALIBRATION", options->calibration, "The calibration file")
      ->type_name("FILE")
      ->required();
  command
      ->add_option("CONFIG", options->configuration,
                   "A configuration of oc_pan cal that names the pictures")
      ->type_name("FILE")
      ->required();
  add_out_option(command, options->out, "the report, named .html")->required();
  add_quiet_flag(command, options->quiet, "failures stay");
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_report(*options); });
}

}  // namespace ocpan

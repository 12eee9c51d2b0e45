#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "calfiles/selen360_cal_file.h"
#include "include/oc_pan_cal.h"
#include "src/console.h"
#include "src/result_codes.h"
#include "tools/calibration_check.h"
#include "tools/common_options.h"
#include "tools/export/rig_export.h"
#include "tools/messages.h"
#include "tools/picture_output.h"
#include "tools/text_output.h"

namespace ocpan {
namespace {

constexpr std::size_t most_cameras = 8;

constexpr const char* footer =
    R"(Of each camera the file tells where it stands and how it is turned, in both directions,
and its lens as a table from the angle off the lens's axis to the radius in pixels, beside
the parameters of CALIBRATION. A matrix takes the table's plane to the picture, so that
nothing of the model is lost. docs/conventions.md explains frames, axes and units.

Examples:
  oc_pan export rig.cal --format opencv-yaml --out rig.yaml
  oc_pan export rig.cal --format json | less

Exit codes:
  0    done
  2    CALIBRATION can't be opened
  3    the output can't be written
  4    CALIBRATION is malformed, or a camera of it has no picture
  6    CALIBRATION doesn't hold 1 to 8 cameras
  64   wrong usage
  255  internal failure)";

struct export_options {
  std::string calibration;
  std::string format;
  std::string out;  // empty for standard output
};

// Reads the cameras and tells what is wrong with them. Gives an exported code.
int read_cameras(std::vector<exported_camera>& cameras, const std::string& path) {
  const std::string bad = number_that_is_none(path, false);
  if (!bad.empty()) {
    complain(path, " holds ", bad, ", which is no number; correct it or calibrate again");
    return OCPAN_MALFORMED;
  }
  selen360_cal_file file(0);  // no radius plays a part
  if (const int result = file.load(path.c_str()); result != code::success) {
    complain(path, " is no calibration that can be read; name one that oc_pan cal wrote");
    return map_result(result);
  }
  const std::size_t count = file.models().size();
  if (count < 1 || count > most_cameras) {
    complain(path, " holds ", count, " cameras, not 1 to ", most_cameras,
             "; name a calibration that oc_pan cal wrote");
    return OCPAN_INVALID;
  }
  if (file.details().size() != count) {
    complain(path, " tells the pictures of ", file.details().size(), " cameras and the models of ",
             count, "; calibrate again");
    return OCPAN_MALFORMED;
  }
  const std::size_t good = export_cameras(cameras, file.models(), file.details());
  if (good == count) return OCPAN_SUCCESS;
  complain("camera ", good, " of ", path, " makes no picture: its H, V, A or O is wrong; ",
           "calibrate again");
  return OCPAN_MALFORMED;
}

int run_export(const export_options& options) {
  if (!options.out.empty()) {
    const std::string reason = why_not_output(options.out, std::vector{options.calibration});
    if (!reason.empty()) {
      complain("--out: ", reason);
      return OCPAN_OUTPUT;
    }
  }
  std::vector<exported_camera> cameras;
  if (const int result = read_cameras(cameras, options.calibration)) return result & 0xFF;
  const std::string text =
      options.format == "json" ? json_text(cameras) : opencv_yaml_text(cameras);
  if (options.out.empty()) {
    std::cout << text << std::flush;
    return std::cout ? OCPAN_SUCCESS : OCPAN_OUTPUT;
  }
  if (!write_text(options.out, text)) return OCPAN_OUTPUT;
  print_line("rig of ", cameras.size(), " cameras ", options.out);
  return OCPAN_SUCCESS;
}

}  // namespace

void add_export_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<export_options>();
  CLI::App* command =
      tool.add_subcommand("export", "Write a calibrated rig for other software to use");
  command->add_option("CALIBRATION", options->calibration, "The rig's calibration")
      ->type_name("FILE")
      ->required();
  command->add_option("--format", options->format, "opencv-yaml (for cv::FileStorage) or json")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"opencv-yaml", "json"}))
      ->required();
  add_out_option(command, options->out, "standard output if left out");
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_export(*options); });
}

}  // namespace ocpan

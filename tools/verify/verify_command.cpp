#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "platform/terminal.h"
#include "tools/common_options.h"
#include "tools/messages.h"
#include "tools/output_check.h"
#include "tools/progress_bar.h"
#include "tools/text_output.h"
#include "tools/verify/verify_report.h"
#include "tools/verify/verify_run.h"

namespace ocpan {
namespace {

constexpr const char* footer =
    R"(Nobody has to look at the tables: their sizes and empty slots, their positions against the
calibration and their weights against the masks are checked, what no camera covers is found,
the overlaps are measured, and the polygons must enclose the weights. lut and poly leave a
manifest beside their files, PREFIX_manifest.json, with the checksums of what they wrote and
read; by it files of mixed age are found. Without one, tables that a program made through the
library are verified all the same.

Yaw counts to the right from -z of the rig, pitch upward.

Examples:
  oc_pan verify tables/lut rig.cal masks/mask
  oc_pan verify tables/lut rig.cal masks/mask --polygons tables/poly --json verified.json

Exit codes:
  0    good
  2    the calibration or a mask can't be opened, or a mask hasn't its camera's size
  3    the file of --json can't be written
  4    the calibration or a mask is malformed
  6    a value of the calibration is out of range (1 to 8 cameras)
  10   doubtful: look at what is told
  11   unusable
  64   wrong usage
  255  internal failure)";

int run_verify(const verify_options& options) {
  if (options.radius && !(*options.radius >= 0.5f)) {
    complain("--radius must be at least 0.5");
    return exit_wrong_usage;
  }
  if (!options.json.empty()) {
    if (const std::string reason = why_not_writable(options.json); !reason.empty()) {
      complain("--json: ", reason);
      return OCPAN_OUTPUT;
    }
    std::error_code failure;
    if (std::filesystem::equivalent(native_path(options.json), native_path(options.calibration),
                                    failure)) {
      complain("--json names the calibration; name another file");
      return OCPAN_OUTPUT;
    }
  }
  verified_tables result;
  {
    progress_line line(std::cerr, standard_error_is_terminal());
    const auto progress = [&](int done, int total) { line.show(bar_text(done, total, "cameras")); };
    if (const int code = verify_tables(result, options, progress)) return code;
  }
  std::cout << verify_text(result, options.quiet) << std::flush;
  if (!options.json.empty() && !write_text(options.json, verify_json(result))) {
    return OCPAN_OUTPUT;
  }
  return exit_code_of(result.judged);
}

}  // namespace

void add_verify_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<verify_options>();
  CLI::App* command =
      tool.add_subcommand("verify", "Judge lookup tables and polygons by their calibration");
  command->add_option("TABLE_PREFIX", options->table_prefix, "Tables are TABLE_PREFIX_0.bin ...")
      ->type_name("PREFIX")
      ->required();
  command->add_option("CALIBRATION", options->calibration, "What they were made from")
      ->type_name("FILE")
      ->required();
  command->add_option("MASK_PREFIX", options->mask_prefix, "Masks are MASK_PREFIX_0.png and so on")
      ->type_name("PREFIX")
      ->required();
  command
      ->add_option("--polygons", options->polygon_prefix,
                   "The polygons PREFIX_0.bin and so on; verified too")
      ->type_name("PREFIX");
  command
      ->add_option(
          "--radius", options->radius,
          "Radius of the sphere that is seen, 1000 units of the calibration; as the tables\n"
          "were made. By default what the manifest says, or 10")
      ->type_name("METRES");
  command
      ->add_option("--face", options->face_size,
                   "Samples across a face of the cube; by default found out")
      ->type_name("N")
      ->check(CLI::IsMember({129, 253}));
  command->add_flag("--project-file", options->project_file,
                    "CALIBRATION is a panorama project file; a manifest says so too");
  add_json_option(command, options->json);
  add_quiet_flag(command, options->quiet, "findings and verdict stay");
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_verify(*options); });
}

}  // namespace ocpan

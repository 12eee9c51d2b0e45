#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "calfiles/create_cal.h"
#include "include/oc_pan_cal.h"
#include "src/console.h"
#include "src/result_codes.h"
#include "tables/camera_files.h"
#include "tools/calibration_check.h"
#include "tools/file_watch.h"
#include "tools/library_result.h"
#include "tools/messages.h"
#include "tools/output_check.h"
#include "tools/verify/table_manifest.h"

namespace ocpan {
namespace {

constexpr std::size_t most_cameras = 8;

struct tables_options {
  std::string calibration;
  std::string mask_prefix;
  std::string output_prefix;
  float radius = 10;  // of the sphere, 1000 units of the calibration
  int face_size = 253;
  bool project_file = false;
};

// The library's call, and what its files are.
struct table_maker {
  std::function<int(const tables_options&)> call;
  std::uintmax_t file_size;
  const char* file_kind;
  const char* command;
  bool has_faces;
};

int lut_call(const tables_options& options) {
  return ocPAN_LutFromCalibration(options.calibration.c_str(), options.mask_prefix.c_str(),
                                  options.output_prefix.c_str(), options.radius,
                                  options.face_size == 129, options.project_file ? 0 : 1);
}

int poly_call(const tables_options& options) {
  return ocPAN_PolyFromCalibration(options.calibration.c_str(), options.mask_prefix.c_str(),
                                   options.output_prefix.c_str(), options.radius,
                                   options.project_file ? 0 : 1);
}

void explain(int result, const tables_options& options) {
  complain("the run ended with ", result, ": ", meaning_of(result));
  switch (result) {
    case OCPAN_OUTPUT:
      complain("see that ", camera_file(options.output_prefix, 0, ".bin"),
               " and the like can be written, and that the disk isn't full");
      break;
    case OCPAN_MEMORY:
      complain("close other programs or give the machine more memory");
      break;
    default:
      complain("the library's line above tells what to correct; the masks are ",
               camera_file(options.mask_prefix, 0, ".png"),
               " and so on, one for each camera, of the sizes that ", options.calibration, " tells",
               options.project_file ? "" : " (a panorama project file needs --project-file)");
  }
}

// The manifest of what is about to be made.
table_manifest manifest_of(const tables_options& options, const table_maker& maker) {
  table_manifest manifest;
  manifest.maker = maker.command;
  manifest.version = OCPAN_TOOL_VERSION;
  manifest.radius = options.radius;
  manifest.face_size = maker.has_faces ? options.face_size : 0;
  manifest.project_file = options.project_file;
  add_inputs(manifest, options.calibration, options.mask_prefix, most_cameras);
  return manifest;
}

// Writes the manifest of a run that has ended well. Gives an exported code.
int leave_manifest(const table_manifest& manifest, const tables_options& options) {
  std::unique_ptr<cal> calibration;
  if (const int code = create_cal(calibration, options.calibration.c_str(), !options.project_file,
                                  options.radius)) {
    return map_result(code);
  }
  const std::string problem =
      write_manifest(manifest, options.output_prefix, calibration->cam_count());
  if (problem.empty()) return OCPAN_SUCCESS;
  complain(problem);
  return OCPAN_OUTPUT;
}

int run_maker(const tables_options& options, const table_maker& maker) {
  if (!options.project_file && !(options.radius >= 0.5f)) {
    complain("--radius must be at least 0.5");
    return exit_wrong_usage;
  }
  const std::string bad = number_that_is_none(options.calibration, options.project_file);
  if (!bad.empty()) {
    complain(options.calibration, " holds ", bad,
             ", which the library would read as 0; correct it or calibrate again");
    return OCPAN_MALFORMED;
  }
  std::vector<std::string> files;
  for (std::size_t camera = 0; camera < most_cameras; ++camera) {
    files.push_back(camera_file(options.output_prefix, camera, ".bin"));
  }
  if (const std::string reason = why_not_writable(files[0]); !reason.empty()) {
    complain("OUTPUT_PREFIX: ", reason);
    return OCPAN_OUTPUT;
  }
  const table_manifest manifest = manifest_of(options, maker);
  int result = OCPAN_FAILURE;
  {
    const file_watch watch(files, maker.file_size, [&](std::size_t camera) {
      print_line("camera ", camera, ": ", maker.file_kind, " ", files[camera]);
    });
    result = maker.call(options);
  }
  if (result != OCPAN_SUCCESS) {
    explain(result, options);
    return result & 0xFF;
  }
  return leave_manifest(manifest, options);
}

CLI::App* add_tables_command(CLI::App& tool, int& exit_code, const std::string& what,
                             const table_maker& maker,
                             const std::shared_ptr<tables_options>& options) {
  CLI::App* command = tool.add_subcommand(maker.command, what);
  command->add_option("CALIBRATION", options->calibration, "The rig's calibration")
      ->type_name("FILE")
      ->required();
  command->add_option("MASK_PREFIX", options->mask_prefix, "Masks are MASK_PREFIX_0.png and so on")
      ->type_name("PREFIX")
      ->required();
  command->add_option("OUTPUT_PREFIX", options->output_prefix, "Files are OUTPUT_PREFIX_0.bin ...")
      ->type_name("PREFIX")
      ->required();
  command
      ->add_option(
          "--radius", options->radius,
          "Radius of the sphere that is seen, 1000 units of the calibration; how far away\n"
          "the panorama's content is. A project file doesn't need it")
      ->type_name("METRES")
      ->capture_default_str();
  command->add_flag("--project-file", options->project_file,
                    "CALIBRATION is a panorama project file");
  command->callback([options, maker, &exit_code] { exit_code = run_maker(*options, maker); });
  return command;
}

constexpr const char* exit_codes = R"(

Exit codes:
  0    done, a file for each camera and a manifest, OUTPUT_PREFIX_manifest.json
  2    an input can't be opened, or a mask hasn't its camera's size
  3    an output can't be opened or written
  4    the calibration is malformed or holds nan or inf, or a mask can't be decoded
  5    out of memory
  6    a value is out of range (1 to 8 cameras)
  64   wrong usage
  255  internal failure)";

}  // namespace

void add_lut_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<tables_options>();
  CLI::App* command =
      add_tables_command(tool, exit_code, "Make the lookup tables of a calibrated rig",
                         {lut_call, 4194304, "lookup table", "lut", true}, options);
  command
      ->add_option("--face", options->face_size,
                   "Samples across a face of the cube; as the device takes them")
      ->type_name("N")
      ->check(CLI::IsMember({129, 253}))
      ->capture_default_str();
  command->footer(std::string(R"(Pixels of a mask above 128 are the camera's region.

Examples:
  oc_pan lut rig.cal masks/mask tables/lut --radius 5
  oc_pan lut rig.pts masks/mask tables/lut --project-file)") +
                  exit_codes);
}

void add_poly_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<tables_options>();
  CLI::App* command =
      add_tables_command(tool, exit_code, "Make the polygon tables of a calibrated rig",
                         {poly_call, 1536, "polygon", "poly", false}, options);
  command->footer(std::string(R"(All pixels of a mask above 0 are the camera's region.

Examples:
  oc_pan poly rig.cal masks/mask tables/poly --radius 5
  oc_pan poly rig.pts masks/mask tables/poly --project-file)") +
                  exit_codes);
}

}  // namespace ocpan

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "src/console.h"
#include "tables/camera_files.h"
#include "tools/common_options.h"
#include "tools/device_preview.h"
#include "tools/messages.h"
#include "tools/output_check.h"

namespace ocpan {
namespace {

struct preview_options {
  std::string table_prefix;
  std::vector<std::string> pictures;
  std::string out;
  std::string polygon_prefix;  // empty for none
  int width = 2048;
  int face_size = 253;
};

bool can_write_picture(const std::string& path) {
  if (const std::string reason = why_not_writable(path); !reason.empty()) {
    complain("--out: ", reason);
    return false;
  }
  if (!cv::haveImageWriter(native_path(path))) {
    complain("--out: ", path, " isn't named like a picture; let it end in .jpg or .png");
    return false;
  }
  return true;
}

// Reads what the device has of the cameras, and tells what it can't. Gives an exported code.
int read_cameras(std::vector<device_camera>& cameras, std::vector<device_polygon>& polygons,
                 const preview_options& options) {
  for (std::size_t i = 0; i < options.pictures.size(); ++i) {
    device_camera& camera = cameras.emplace_back();
    std::string problem =
        read_device_table(camera.table, camera_file(options.table_prefix, i, ".bin"));
    if (problem.empty() && !options.polygon_prefix.empty()) {
      problem = read_device_polygon(polygons.emplace_back(),
                                    camera_file(options.polygon_prefix, i, ".bin"));
    }
    if (!problem.empty()) {
      complain(problem, "; make it with oc_pan lut or oc_pan poly, one for each picture");
      return OCPAN_INPUT;
    }
    try {
      camera.picture = cv::imread(native_path(options.pictures[i]), cv::IMREAD_COLOR);
    } catch (const cv::Exception&) {  // a header that claims too much
    }
    if (camera.picture.empty()) {
      complain(options.pictures[i], " can't be read; name a picture for each camera, in order");
      return OCPAN_INPUT;
    }
  }
  return OCPAN_SUCCESS;
}

int run_preview(const preview_options& options) {
  if (!can_write_picture(options.out)) return OCPAN_OUTPUT;
  std::vector<device_camera> cameras;
  std::vector<device_polygon> polygons;
  if (const int result = read_cameras(cameras, polygons, options)) return result;
  device_panorama panorama = stitch(cameras, options.width, options.face_size);
  draw_polygons(panorama.picture, polygons);
  if (!cv::imwrite(native_path(options.out), panorama.picture)) {
    complain(options.out, " couldn't be written; free space on its disk");
    return OCPAN_OUTPUT;
  }
  print_line("panorama ", options.out, ", ", panorama.picture.cols, " x ", panorama.picture.rows,
             ", ", 100.0 * cv::countNonZero(panorama.covered) / panorama.covered.total(),
             " % covered");
  return OCPAN_SUCCESS;
}

}  // namespace

void add_preview_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<preview_options>();
  CLI::App* command = tool.add_subcommand(
      "preview", "Stitch a panorama from lookup tables and pictures, as the device does");
  command->add_option("TABLE_PREFIX", options->table_prefix, "Tables are TABLE_PREFIX_0.bin ...")
      ->type_name("PREFIX")
      ->required();
  command->add_option("PICTURE", options->pictures, "A picture from each camera, in order")
      ->type_name("FILE")
      ->expected(1, 8)
      ->required();
  add_out_option(command, options->out, "the panorama, named .jpg or .png")->required();
  command->add_option("--width", options->width, "Width of the panorama; it is half as high")
      ->type_name("PIXELS")
      ->check(CLI::Range(16, 16384))
      ->capture_default_str();
  command
      ->add_option("--polygons", options->polygon_prefix,
                   "The polygons PREFIX_0.bin and so on; drawn as outlines")
      ->type_name("PREFIX");
  command
      ->add_option("--face", options->face_size,
                   "Samples across a face of the cube; as the tables were made")
      ->type_name("N")
      ->check(CLI::IsMember({129, 253}))
      ->capture_default_str();
  command->footer(
      R"(The panorama is equirectangular: its middle looks along -z of the rig, where camera 0 of
a new calibration looks. Nothing but the tables and the pictures is read.

Examples:
  oc_pan preview tables/lut a.png b.png c.png --out panorama.jpg
  oc_pan preview tables/lut a.png b.png --polygons tables/poly --out panorama.jpg

Exit codes:
  0   done
  2   a table, a polygon or a picture can't be read
  3   the panorama can't be written
  64  wrong usage
  255 internal failure)");
  command->callback([options, &exit_code] { exit_code = run_preview(*options); });
}

}  // namespace ocpan

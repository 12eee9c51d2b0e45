#include <array>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>

#include "calfiles/create_cal.h"
#include "fuzz/byte_source.h"
#include "fuzz/promise.h"
#include "fuzz/scratch_folder.h"
#include "fuzz/table_files.h"
#include "include/oc_pan_cal.h"
#include "src/result_codes.h"
#include "tables/camera_files.h"
#include "tests/support/temp_folder.h"

// The first byte of the input says how the tables are made, the rest is a calibration or a
// panorama project file. Small masks are made for it.

namespace ocpan::fuzz {
namespace {

constexpr std::uint64_t most_cameras = 2;  // that have a mask: a table takes its time
constexpr int largest_side = 100;          // pixels, of a mask

struct table_options {
  bool use_file_class;
  bool small_face;
  float radius;
};

table_options options_of(std::uint8_t byte) {
  constexpr std::array<float, 4> radii = {1.0F, 0.25F, std::numeric_limits<float>::infinity(),
                                          std::numeric_limits<float>::quiet_NaN()};
  return {(byte & 1) != 0, (byte & 2) != 0, radii[byte / 4 % radii.size()]};
}

// White but for the first pixel; in another size where the camera's can't be had.
std::string mask_picture(int width, int height) {
  const bool possible = width > 0 && height > 0 && width <= largest_side && height <= largest_side;
  if (!possible) width = height = 8;
  std::string picture = "P5 " + std::to_string(width) + " " + std::to_string(height) + " 255\n";
  picture += '\0';
  return picture.append(static_cast<std::size_t>(width * height - 1), '\xff');
}

// Makes the masks of the first cameras. Gives no calibration where it can't be read.
std::unique_ptr<cal> prepare(const std::string& path, const table_options& options) {
  std::unique_ptr<cal> calibration;
  const int read = create_cal(calibration, path.c_str(), options.use_file_class, options.radius);
  if (read != code::success) return nullptr;
  for (std::uint64_t camera = 0; camera < calibration->cam_count(); ++camera) {
    const std::string mask = camera_file(scratch_file("table_mask"), camera, ".png");
    std::filesystem::remove(mask);
    if (camera >= most_cameras) continue;
    testing::write_file(
        mask, mask_picture(calibration->cam_width(camera), calibration->cam_height(camera)));
  }
  return calibration;
}

void remove_outputs() {
  for (std::uint64_t camera = 0; camera < 8; ++camera) {
    for (const char* prefix : {"table", "polygon"}) {
      std::filesystem::remove(camera_file(scratch_file(prefix), camera, ".bin"));
    }
  }
}

// The outputs of the first cameras stand and are whole, up to the one that failed.
template <typename IsWhole>
void must_have_written(int result, const cal* calibration, IsWhole&& is_whole) {
  must_be_result(result);
  must_hold(result != OCPAN_SUCCESS || calibration, "no success without a calibration");
  if (!calibration) return;
  bool missing = false;
  for (std::uint64_t camera = 0; camera < calibration->cam_count(); ++camera) {
    const bool whole = is_whole(camera);
    must_hold(whole || result != OCPAN_SUCCESS, "a success has written everything");
    must_hold(!whole || !missing, "nothing is written behind a failure");
    missing = !whole;
  }
}

}  // namespace

void run_tables(input bytes) {
  if (bytes.empty()) return;
  const table_options options = options_of(bytes[0]);
  const std::string path = scratch_file("table_rig");
  testing::write_file(path, text_of(bytes.subspan(1)));
  const std::unique_ptr<cal> calibration = prepare(path, options);
  remove_outputs();

  const std::string masks = scratch_file("table_mask");
  const std::string tables = scratch_file("table");
  must_have_written(
      ocPAN_LutFromCalibration(path.c_str(), masks.c_str(), tables.c_str(), options.radius,
                               options.small_face, options.use_file_class),
      calibration.get(), [&](std::uint64_t camera) {
        return is_whole_table(camera_file(tables, camera, ".bin"), calibration->cam_width(camera),
                              calibration->cam_height(camera));
      });
  const std::string polygons = scratch_file("polygon");
  must_have_written(ocPAN_PolyFromCalibration(path.c_str(), masks.c_str(), polygons.c_str(),
                                              options.radius, options.use_file_class),
                    calibration.get(), [&](std::uint64_t camera) {
                      return is_whole_polygon(camera_file(polygons, camera, ".bin"));
                    });
}

}  // namespace ocpan::fuzz

#include "src/config_summary.h"

#include <cstddef>

#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

int print_set_camera(const set_camera& camera) {
  print_line("     + id: ", camera.id);
  print_line("     + file_type: ", camera.file_type);
  print_line("     + files (", camera.files.size(), "):");
  if (camera.files.empty()) {
    print_line("");
    print_line("Error: zero files in set not allowed");
    return code::content_malformed;
  }
  for (const char* file : camera.files) print_line("       - ", file);
  return code::success;
}

int print_set(std::size_t index, const set_config& set) {
  print_line("   ", index);
  print_line("    - set_prefix: ", set.set_prefix);
  print_line("    - board shape: ", set.board_width, ", ", set.board_height);
  print_line("    - board scale: ", set.board_scale);
  print_line("    - save frames: ", set.save_frames ? "true" : "false");
  print_line("    - cameras (", set.cameras.size(), "):");
  for (const set_camera& camera : set.cameras) {
    const int result = print_set_camera(camera);
    if (result != code::success) return result;
  }
  return code::success;
}

}  // namespace

int print_config_summary(const std::string& output_file, const std::vector<camera_details>& cameras,
                         const std::vector<set_config>& sets) {
  print_line("Starting calibration with the following parameters...");
  print_line(" Output file: ", output_file);
  print_line(" Camera parameters (", cameras.size(), "):");
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    print_line("   ", i, " - width: ", cameras[i].width, ", height: ", cameras[i].height,
               ", hfov: ", cameras[i].hfov, ", lens: ", cameras[i].lens);
  }
  print_line(" Calibration sets (", sets.size(), "):");
  for (std::size_t i = 0; i < sets.size(); ++i) {
    if (sets[i].cameras.empty() || sets[i].cameras.front().files.empty()) continue;
    const int result = print_set(i, sets[i]);
    if (result != code::success) return result;
  }
  print_line("");
  return code::success;
}

}  // namespace ocpan

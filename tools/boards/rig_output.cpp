#include "tools/boards/rig_output.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "platform/native_path.h"
#include "src/result_codes.h"
#include "tools/boards/found_boards.h"
#include "tools/picture_output.h"

namespace ocpan {
namespace {

std::vector<std::string> files_of(const rig_pictures& pictures) {
  std::vector<std::string> files;
  for (const cal_frame_set& set : pictures.sets) {
    for (const set_camera& camera : set.set_cameras) {
      files.insert(files.end(), camera.files.begin(), camera.files.end());
    }
  }
  return files;
}

// Whether both name the same place, though nothing may be there yet.
bool same_place(const std::string& a, const std::string& b) {
  std::error_code failure_a, failure_b;
  const auto place_a = std::filesystem::weakly_canonical(native_path(a), failure_a);
  const auto place_b = std::filesystem::weakly_canonical(native_path(b), failure_b);
  return !failure_a && !failure_b && place_a == place_b;
}

}  // namespace

std::string why_not_rig_output(const std::string& output, const std::string& calibration,
                               const std::string& configuration) {
  std::vector<std::string> inputs = {calibration, configuration};
  rig_pictures pictures;
  std::string said;
  if (read_rig_pictures(pictures, said, configuration) == code::success) {
    const std::vector<std::string> files = files_of(pictures);
    inputs.insert(inputs.end(), files.begin(), files.end());
    const std::string corner_file = corner_file_name(pictures.output_file);
    if (same_place(output, corner_file)) {
      return output + " keeps the corners of the pictures; name another output";
    }
    inputs.push_back(corner_file);
  }
  return why_not_output(output, inputs);
}

}  // namespace ocpan

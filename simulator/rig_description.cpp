#include "simulator/rig_description.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace ocpan {
namespace {

// Not-a-number lies in no range.
bool in_range(double value, double low, double high) { return value >= low && value <= high; }

std::string element(const char* list, std::size_t index) {
  return std::string(list) + "[" + std::to_string(index) + "]";
}

std::string camera_problem(const rig_camera& camera, const std::string& path) {
  const camera_details& d = camera.details;
  if (!in_range(d.width, 16, 16384)) return path + ".width: expected 16 to 16384 pixels";
  if (!in_range(d.height, 16, 16384)) return path + ".height: expected 16 to 16384 pixels";
  if (!in_range(d.lens, 0, 2)) return path + ".lens: expected 0, 1 or 2";
  const double widest = d.lens == 0 ? 170 : 300;
  if (!in_range(d.hfov, 1, widest)) {
    return path + ".hfov: expected 1 to " + (d.lens == 0 ? "170" : "300") + " degrees";
  }
  for (const auto& [key, value] : camera.model) {
    if (!std::isfinite(value)) {
      return path + ".model." + parameter_text(key) + ": expected a finite number";
    }
  }
  for (int key = C_0; key <= L; ++key) {
    const auto name = static_cast<parameter_name>(key);
    if (!camera.model.contains(name)) {
      return path + ".model." + parameter_text(name) + ": is missing";
    }
  }
  if (!(std::abs(value_of(camera.model, L)) >= 1e-6)) {
    return path + ".model.L: expected a number other than 0";
  }
  return {};
}

bool plain_name(const std::string& name) {
  return !name.empty() && name.size() <= 64 && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  });
}

std::string series_problem(const series_description& series, std::size_t cameras,
                           const std::string& path) {
  if (!plain_name(series.name)) {
    return path + ".name: expected letters, digits and \"_\"";
  }
  if (!in_range(series.frames, 1, 1000)) return path + ".frames: expected 1 to 1000";
  if (series.cameras.empty()) return path + ".cameras: expected at least one camera";
  std::set<std::size_t> seen;
  for (const std::size_t camera : series.cameras) {
    if (camera >= cameras) {
      return path + ".cameras: expected numbers 1 to " + std::to_string(cameras);
    }
    if (!seen.insert(camera).second) return path + ".cameras: a camera stands there twice";
  }
  return {};
}

std::string fault_problem(const fault_description& fault, const rig_description& description,
                          const std::string& path) {
  if (fault.series >= description.sets.size()) return path + ".set: expected the name of a set";
  const series_description& series = description.sets[fault.series];
  if (std::find(series.cameras.begin(), series.cameras.end(), fault.camera) ==
      series.cameras.end()) {
    return path + ".camera: expected a camera of the set";
  }
  if (!in_range(fault.frame, 0, series.frames - 1)) {
    return path + ".frame: expected 0 to " + std::to_string(series.frames - 1);
  }
  return {};
}

std::string options_problem(const rig_description& description) {
  if (!in_range(description.board.width, 3, 40))
    return "board.width: expected 3 to 40 inner corners";
  if (!in_range(description.board.height, 3, 40))
    return "board.height: expected 3 to 40 inner corners";
  if (!in_range(description.board.square, 1e-6, 1e6))
    return "board.square: expected a length above 0";
  const pose_limits& poses = description.poses;
  if (!in_range(poses.min_distance, 1e-6, 1e9)) {
    return "poses.min_distance: expected a length above 0";
  }
  if (!in_range(poses.max_distance, poses.min_distance, 1e9)) {
    return "poses.max_distance: expected a length not below min_distance";
  }
  if (!in_range(poses.tilt_degrees, 0, 80)) return "poses.tilt_degrees: expected 0 to 80";
  if (!in_range(poses.roll_degrees, 0, 180)) return "poses.roll_degrees: expected 0 to 180";
  const rendering_options& rendering = description.rendering;
  if (!in_range(rendering.blur, 0, 20)) return "rendering.blur: expected 0 to 20 pixels";
  if (!in_range(rendering.noise, 0, 100)) return "rendering.noise: expected 0 to 100 grey levels";
  if (!in_range(rendering.uneven_light, 0, 0.9)) {
    return "rendering.uneven_light: expected 0 to 0.9";
  }
  if (rendering.format != "png" && rendering.format != "jpg") {
    return "rendering.format: expected \"png\" or \"jpg\"";
  }
  return {};
}

}  // namespace

std::string rig_problem(const rig_description& description) {
  if (!in_range(static_cast<double>(description.cameras.size()), 1, 8)) {
    return "cameras: expected 1 to 8 of them";
  }
  for (std::size_t i = 0; i < description.cameras.size(); ++i) {
    const std::string problem = camera_problem(description.cameras[i], element("cameras", i));
    if (!problem.empty()) return problem;
  }
  if (std::string problem = options_problem(description); !problem.empty()) return problem;
  std::set<std::string> names;
  for (std::size_t i = 0; i < description.sets.size(); ++i) {
    const series_description& series = description.sets[i];
    const std::string path = element("sets", i);
    const std::string problem = series_problem(series, description.cameras.size(), path);
    if (!problem.empty()) return problem;
    if (!names.insert(series.name).second) return path + ".name: another set has this name";
  }
  for (std::size_t i = 0; i < description.faults.size(); ++i) {
    const std::string problem =
        fault_problem(description.faults[i], description, element("faults", i));
    if (!problem.empty()) return problem;
  }
  return {};
}

std::vector<camera_details> details_of(const rig_description& description) {
  std::vector<camera_details> details;
  for (const rig_camera& camera : description.cameras) details.push_back(camera.details);
  return details;
}

rig models_of(const rig_description& description) {
  rig models;
  for (const rig_camera& camera : description.cameras) models.push_back(camera.model);
  return models;
}

}  // namespace ocpan

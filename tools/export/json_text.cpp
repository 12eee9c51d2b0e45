#include <nlohmann/json.hpp>

#include "tools/export/rig_export.h"
#include "tools/export/rigid_motion.h"

namespace ocpan {
namespace {

using json = nlohmann::ordered_json;

json list_of(const Eigen::Vector3d& v) { return {v.x(), v.y(), v.z()}; }

json rows_of(const Eigen::Matrix3d& m) {
  json rows = json::array();
  for (Eigen::Index row = 0; row < 3; ++row) rows.push_back(list_of(m.row(row)));
  return rows;
}

json motion(const exported_motion& motion) {
  return {{"rotation_matrix", rows_of(motion.rotation)},
          {"rotation_vector", list_of(rotation_vector(motion.rotation))},
          {"translation", list_of(motion.translation)}};
}

json parameters(const model_map& model) {
  json values = json::object();
  for (const auto& [key, value] : model) values[parameter_text(key)] = value;
  return values;
}

json lens(const exported_camera& camera) {
  const double f = camera.axes.focal_length;
  json radius = json::array();
  for (const double r : camera.lens.radius) radius.push_back(r * f);
  return {{"focal_length_pixels", f},
          {"pixel_from_plane", rows_of(camera.axes.pixel_from_plane)},
          {"interpolation_error_pixels", camera.lens.interpolation_error * f},
          {"angle_degrees", camera.lens.angle_degrees},
          {"radius_pixels", std::move(radius)}};
}

json camera_entry(const exported_camera& camera) {
  return {{"width", camera.details.width},
          {"height", camera.details.height},
          {"lens_kind", camera.details.lens},
          {"hfov_degrees", static_cast<double>(camera.details.hfov)},
          {"centre", list_of(camera.axes.centre)},
          {"camera_from_rig", motion(camera_from_rig(camera.axes))},
          {"rig_from_camera", motion(rig_from_camera(camera.axes))},
          {"lens_table", lens(camera)},
          {"parameters", parameters(camera.model)}};
}

}  // namespace

std::string json_text(const std::vector<exported_camera>& cameras) {
  json file;
  for (const convention& each : export_conventions()) {
    file["conventions"][each.topic] = each.meaning;
  }
  file["cameras"] = json::array();
  for (const exported_camera& camera : cameras) file["cameras"].push_back(camera_entry(camera));
  return file.dump(1) + '\n';
}

}  // namespace ocpan

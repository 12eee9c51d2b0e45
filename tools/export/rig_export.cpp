#include "tools/export/rig_export.h"

#include <algorithm>
#include <cmath>

namespace ocpan {
namespace {

bool is_finite(const exported_camera& camera) {
  const auto finite = [](double value) { return std::isfinite(value); };
  return camera.axes.camera_from_rig.allFinite() && camera.axes.centre.allFinite() &&
         camera.axes.pixel_from_plane.allFinite() && !camera.lens.radius.empty() &&
         std::all_of(camera.lens.radius.begin(), camera.lens.radius.end(), finite);
}

}  // namespace

std::size_t export_cameras(std::vector<exported_camera>& cameras, const rig& models,
                           const std::vector<camera_details>& details) {
  cameras.clear();
  for (std::size_t i = 0; i < models.size(); ++i) {
    exported_camera camera{details[i], models[i], axes_of(models[i]), {}};
    const double radius = plane_radius(camera.axes, details[i]);
    camera.lens = sample_lens(models[i], radius / camera.axes.focal_length);
    if (!is_finite(camera)) return i;
    cameras.push_back(std::move(camera));
  }
  return models.size();
}

const std::vector<convention>& export_conventions() {
  static const std::vector<convention> conventions = {
      {"camera_frame",
       "right-handed: z along the axis of the lens, x to the picture's right, y down"},
      {"rig_frame",
       "right-handed: that of the calibration file; camera 0 of a new calibration "
       "looks along -z with x to its right and y up"},
      {"camera_from_rig", "p_camera = rotation_matrix * p_rig + translation"},
      {"rig_from_camera",
       "p_rig = rotation_matrix * p_camera + translation; the translation is "
       "the camera's centre"},
      {"rotation_vector", "axis times angle, radians"},
      {"length", "the unit of board_scale in the calibration's configuration"},
      {"pixel", "x to the right, y down; (0, 0) is the middle of the top left pixel"},
      {"lens_table", "angle_degrees from z to radius_pixels in the lens's plane"},
      {"pixel_from_plane",
       "(x w, y w, w) = pixel_from_plane * (radius * cos(phi), radius * sin(phi), 1), where phi "
       "turns from the camera's x to its y"},
  };
  return conventions;
}

}  // namespace ocpan

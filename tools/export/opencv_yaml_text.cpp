#include <opencv2/core.hpp>
#include <opencv2/core/persistence.hpp>

#include "tools/export/rig_export.h"
#include "tools/export/rigid_motion.h"

namespace ocpan {
namespace {

cv::Matx33d matrix(const Eigen::Matrix3d& m) {
  return {m(0, 0), m(0, 1), m(0, 2), m(1, 0), m(1, 1), m(1, 2), m(2, 0), m(2, 1), m(2, 2)};
}

cv::Matx31d column(const Eigen::Vector3d& v) { return {v.x(), v.y(), v.z()}; }

template <int Rows, int Columns>
void write(cv::FileStorage& file, const char* name, const cv::Matx<double, Rows, Columns>& value) {
  file << name << cv::Mat(value);
}

void write_motion(cv::FileStorage& file, const char* name, const exported_motion& motion) {
  file << name << "{";
  write(file, "rotation_matrix", matrix(motion.rotation));
  write(file, "rotation_vector", column(rotation_vector(motion.rotation)));
  write(file, "translation", column(motion.translation));
  file << "}";
}

void write_lens(cv::FileStorage& file, const exported_camera& camera) {
  const double f = camera.axes.focal_length;
  std::vector<double> radius = camera.lens.radius;
  for (double& r : radius) r *= f;
  file << "lens_table"
       << "{"
       << "focal_length_pixels" << f;
  write(file, "pixel_from_plane", matrix(camera.axes.pixel_from_plane));
  file << "interpolation_error_pixels" << camera.lens.interpolation_error * f  //
       << "angle_degrees" << camera.lens.angle_degrees                         //
       << "radius_pixels" << radius << "}";
}

void write_camera(cv::FileStorage& file, const exported_camera& camera) {
  file << "{"
       << "width" << camera.details.width << "height" << camera.details.height << "lens_kind"
       << camera.details.lens  //
       << "hfov_degrees" << static_cast<double>(camera.details.hfov);
  write(file, "centre", column(camera.axes.centre));
  write_motion(file, "camera_from_rig", camera_from_rig(camera.axes));
  write_motion(file, "rig_from_camera", rig_from_camera(camera.axes));
  write_lens(file, camera);
  file << "parameters"
       << "{";
  for (const auto& [key, value] : camera.model) file << parameter_text(key) << value;
  file << "}"
       << "}";
}

}  // namespace

std::string opencv_yaml_text(const std::vector<exported_camera>& cameras) {
  cv::FileStorage file(
      "rig.yaml", cv::FileStorage::WRITE | cv::FileStorage::MEMORY | cv::FileStorage::FORMAT_YAML);
  file << "conventions"
       << "{";
  for (const convention& each : export_conventions()) file << each.topic << each.meaning;
  file << "}"
       << "cameras"
       << "[";
  for (const exported_camera& camera : cameras) write_camera(file, camera);
  file << "]";
  return file.releaseAndGetString();
}

}  // namespace ocpan

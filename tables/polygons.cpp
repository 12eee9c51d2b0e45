#include "tables/polygons.h"

#include <array>
#include <bit>
#include <memory>

#include "calfiles/create_cal.h"
#include "calibration/read_image.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "src/result_codes.h"
#include "tables/camera_files.h"
#include "tables/mask_outline.h"
#include "tables/sphere_polygon.h"

namespace ocpan {
namespace {

static_assert(std::endian::native == std::endian::little,
              "components are written as they lie in memory");

// Makes and writes the polygon of one camera.
int write_camera_polygon(const cal& calibration, std::uint64_t camera, const std::string& mask_name,
                         const std::string& output_name) {
  const int width = calibration.cam_width(camera);
  const int height = calibration.cam_height(camera);
  cv::Mat mask;
  if (const int result = read_image(mask, mask_name.c_str(), 0, width, height)) return result;
  const std::vector<Eigen::Vector2d> hull = coarse_hull(mask);
  if (hull.empty()) {
    print_line("No mask pixels in: ", mask_name);
    return code::content_malformed;
  }
  Eigen::MatrixX3d points;
  // The camera is known to be one of the calibration's.
  static_cast<void>(
      calibration.cam_unproject(points, subdivide_to_128(remove_repeats(hull)), camera));
  for (Eigen::Index i = 0; i < points.rows(); ++i) points.row(i) /= points.row(i).norm();
  const Eigen::MatrixX3d directions = expand_on_sphere(points);

  std::ofstream out = open_output(output_name, std::ios::binary);
  if (!out) {
    print_line("Error opening output file: ", output_name);
    return code::output_unopened;
  }
  std::array<std::int32_t, polygon_vertices * 3> components;
  std::size_t filled = 0;
  for (int i = 0; i < polygon_vertices; ++i) {
    for (int j = 0; j < 3; ++j) components[filled++] = to_q24(directions(i, j));
  }
  return write_bytes(out, output_name, components.data(), sizeof components);
}

}  // namespace

int generate_polygons(const char* cal_file_name, const std::string& mask_prefix,
                      const std::string& output_prefix, float sphere_radius, bool use_file_class) {
  std::unique_ptr<cal> calibration;
  if (const int result = create_cal(calibration, cal_file_name, use_file_class, sphere_radius)) {
    return result;
  }
  for (std::uint64_t camera = 0; camera < calibration->cam_count(); ++camera) {
    if (const int result =
            write_camera_polygon(*calibration, camera, camera_file(mask_prefix, camera, ".png"),
                                 camera_file(output_prefix, camera, ".bin"))) {
      return result;
    }
  }
  return code::success;
}

}  // namespace ocpan

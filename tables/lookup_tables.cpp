#include "tables/lookup_tables.h"

#include <bit>
#include <memory>

#include "calfiles/create_cal.h"
#include "calibration/read_image.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "src/result_codes.h"
#include "tables/camera_files.h"
#include "tables/cube_faces.h"
#include "tables/lut_format.h"
#include "tables/weight_map.h"

namespace ocpan {
namespace {

static_assert(std::endian::native == std::endian::little,
              "entries are written as they lie in memory");

// The weight at a position, truncated towards zero to a pixel; 0 beyond the picture, which
// a position that is no int of 32 bits is too.
int weight_at_position(const weight_map& map, double x, double y) {
  const bool inside = x > -1.0 && x < map.distance.cols && y > -1.0 && y < map.distance.rows;
  return inside ? weight_at(map, static_cast<int>(y), static_cast<int>(x)) : 0;
}

// Makes and writes the table of one camera.
int write_camera_lut(const cal& calibration, std::uint64_t camera,
                     const std::vector<point_block>& directions, const std::string& mask_name,
                     const std::string& output_name) {
  std::vector<point_block> positions;
  if (const int result = calibration.cam_project(directions, camera, positions)) return result;
  const int width = calibration.cam_width(camera);
  const int height = calibration.cam_height(camera);
  cv::Mat mask;
  if (const int result = read_image(mask, mask_name.c_str(), 0, width, height)) return result;
  // Made before the older table is emptied.
  const std::vector<std::uint64_t> entries = lut_entries(positions, mask);
  std::ofstream out = open_output(output_name, std::ios::binary);
  if (!out) {
    print_line("Error opening output file: ", output_name);
    return code::output_unopened;
  }
  return write_bytes(out, output_name, entries.data(), entries.size() * sizeof(entries[0]));
}

}  // namespace

std::vector<std::uint64_t> lut_entries(const std::vector<point_block>& positions,
                                       const cv::Mat& mask) {
  const weight_map map = make_weight_map(mask);
  std::vector<std::uint64_t> entries(lut_entry_count);
  for (std::size_t face = 0; face < positions.size(); ++face) {
    for (std::size_t a = 0; a < cube_samples; ++a) {
      const double* x = positions[face][a].data();
      const double* y = x + cube_samples;
      for (std::size_t b = 0; b < cube_samples; ++b) {
        entries[lut_index(face, a, b)] =
            pack_lut_entry(x[b], y[b], weight_at_position(map, x[b], y[b]));
      }
    }
  }
  return entries;
}

int generate_lookup_tables(const char* cal_file_name, const std::string& mask_prefix,
                           const std::string& output_prefix, float sphere_radius, int face_size,
                           bool use_file_class) {
  std::unique_ptr<cal> counted;
  if (const int result = create_cal(counted, cal_file_name, use_file_class, sphere_radius)) {
    return result;
  }
  std::vector<std::string> mask_names;
  for (std::uint64_t camera = 0; camera < counted->cam_count(); ++camera) {
    mask_names.push_back(camera_file(mask_prefix, camera, ".png"));
  }
  if (face_size != 129 && face_size != 253) {
    print_line("Cube face size must be 129 or 253, got: ", face_size);
    return code::argument_invalid;
  }
  // The file is read again, and may have changed: the masks were counted by the first.
  std::unique_ptr<cal> calibration;
  if (const int result = create_cal(calibration, cal_file_name, use_file_class, sphere_radius)) {
    return result;
  }
  if (calibration->cam_count() != mask_names.size()) {
    print_line("Number of cameras in cal file (", calibration->cam_count(),
               ") doesn't match the number of masks (", mask_names.size(), ")");
    return code::argument_invalid;
  }
  const std::vector<point_block> directions = cube_faces(face_size);
  for (std::uint64_t camera = 0; camera < mask_names.size(); ++camera) {
    if (const int result = write_camera_lut(*calibration, camera, directions, mask_names[camera],
                                            camera_file(output_prefix, camera, ".bin"))) {
      return result;
    }
  }
  return code::success;
}

}  // namespace ocpan

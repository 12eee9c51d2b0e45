#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "calfiles/create_cal.h"
#include "fuzz/byte_source.h"
#include "fuzz/mask_pictures.h"
#include "fuzz/promise.h"
#include "fuzz/scratch_folder.h"
#include "fuzz/table_files.h"
#include "include/oc_pan_cal.h"
#include "src/result_codes.h"
#include "tables/cube_faces.h"
#include "tables/lookup_tables.h"
#include "tables/lut_format.h"
#include "tables/mask_outline.h"
#include "tables/weight_map.h"
#include "tests/support/temp_folder.h"

// The input describes a mask and how it is written as a picture. The picture goes through
// the polygons, the raw masks and the tables.

namespace ocpan::fuzz {
namespace {

// A camera that sees its whole picture within 90 degrees.
std::string calibration_of(const cv::Mat& mask) {
  const std::string half_width = std::to_string(mask.cols / 2);
  const std::string half_height = std::to_string(mask.rows / 2);
  return "Width:" + std::to_string(mask.cols) + " Height:" + std::to_string(mask.rows) +
         " Lens:0 Hfov:90\nC_0:0 C_1:0 C_2:0 A_th:3.14159 A_ph:0 H_0:" + half_width +
         ".5 H_1:0 H_2:-" + half_width + " V_0:0 V_1:-" + half_height + ".5 V_2:-" + half_height +
         " O_th:3.14159 O_ph:0 rho_0:0 rho_1:0 rho_2:0 L:1\n";
}

// Every pixel above 0 lies in the hull or on it; the first and the last of each row say it
// for all between.
void must_surround(const std::vector<Eigen::Vector2d>& hull, const cv::Mat& mask) {
  must_hold(hull.size() <= 128, "a hull has at most 128 corners");
  if (hull.size() < 3) return;
  const auto must_be_inside = [&](std::ptrdiff_t column, int row) {
    for (std::size_t k = 0; k < hull.size(); ++k) {
      const Eigen::Vector2d along = hull[(k + 1) % hull.size()] - hull[k];
      const Eigen::Vector2d offset(static_cast<double>(column) - hull[k].x(), row - hull[k].y());
      must_hold(offset.y() * along.x() >= along.y() * offset.x(), "a hull surrounds its mask");
    }
  };
  for (int row = 0; row < mask.rows; ++row) {
    const std::span<const std::uint8_t> greys(mask.ptr(row), static_cast<std::size_t>(mask.cols));
    const auto is_set = [](std::uint8_t grey) { return grey > 0; };
    const auto first = std::ranges::find_if(greys, is_set);
    if (first == greys.end()) continue;
    must_be_inside(first - greys.begin(), row);
    must_be_inside(
        mask.cols - 1 - (std::find_if(greys.rbegin(), greys.rend(), is_set) - greys.rbegin()), row);
  }
}

void must_make_polygon(const cv::Mat& mask, bool sound) {
  const std::string prefix = scratch_file("mask");
  const std::string output = scratch_file("mask_0.bin");
  testing::write_file(scratch_file("mask.cal"), calibration_of(mask));
  std::filesystem::remove(output);
  const int result = ocPAN_PolyFromCalibration(scratch_file("mask.cal").c_str(), prefix.c_str(),
                                               prefix.c_str(), 1.0F, 1);
  must_be_result(result);
  must_hold(is_whole_polygon(output) == (result == OCPAN_SUCCESS), "a polygon on success alone");
  const std::vector<Eigen::Vector2d> hull = coarse_hull(mask);
  must_surround(hull, mask);
  if (sound) {
    must_hold(result == (hull.empty() ? OCPAN_MALFORMED : OCPAN_SUCCESS),
              "a mask with pixels has a polygon");
  }
}

void must_make_raw_mask(const cv::Mat& mask, bool sound) {
  const std::string picture = scratch_file("mask_0.png");
  const std::string output = scratch_file("mask.raw");
  std::filesystem::remove(output);
  const char* const inputs[] = {picture.c_str()};
  const char* const outputs[] = {output.c_str()};
  const int result = ocPAN_MaskTransform(1, inputs, outputs);
  must_be_result(result);
  if (!sound) return;
  must_hold(result == OCPAN_SUCCESS, "a mask is transformed");
  const std::string bytes = testing::read_file(output);
  must_hold(bytes.size() == 2 * mask.total(), "a raw mask has its size");
  for (std::size_t k = 0; k < mask.total(); ++k) {
    std::uint16_t weight = 0;
    std::memcpy(&weight, &bytes[2 * k], 2);
    must_hold(weight <= 1023, "a weight has 10 bits");
    must_hold((weight > 0) == (mask.data[k] > 128), "weights above 128 alone");
  }
}

// Directions taken to pixels of the middle of the largest mask once; it is masks that change.
void must_make_table(const cv::Mat& mask) {
  static const std::vector<point_block> positions = [] {
    const cv::Mat largest(300, 300, CV_8UC1);
    testing::write_file(scratch_file("largest.cal"), calibration_of(largest));
    std::unique_ptr<cal> calibration;
    const int read = create_cal(calibration, scratch_file("largest.cal").c_str(), true, 1.0F);
    must_hold(read == code::success, "a calibration is read");
    std::vector<point_block> pixels;
    must_hold(calibration->cam_project(cube_faces(129), 0, pixels) == code::success,
              "a known camera projects");
    return pixels;
  }();
  const std::vector<std::uint64_t> entries = lut_entries(positions, mask);
  must_hold(entries.size() == lut_entry_count, "a table has its size");
  const bool lit = std::any_of(mask.data, mask.data + mask.total(),
                               [](std::uint8_t grey) { return grey > 128; });
  const bool weighted =
      std::ranges::any_of(entries, [](std::uint64_t entry) { return (entry & 1023) != 0; });
  must_hold(lit || !weighted, "a black mask has no weight");
}

}  // namespace

void run_masks(input bytes) {
  byte_source source(bytes);
  const std::uint8_t options = source.byte();
  const cv::Mat mask = make_mask(source);
  const std::uint8_t kinds[] = {options, static_cast<std::uint8_t>(bytes.size())};
  byte_source kind(kinds);
  const mask_file_bytes file = encode_mask(mask, kind);
  testing::write_file(scratch_file("mask_0.png"), file.bytes);
  must_make_polygon(mask, file.sound);
  must_make_raw_mask(mask, file.sound);
  // The slow one of them.
  if (options >= 128) must_make_table(mask);
}

}  // namespace ocpan::fuzz

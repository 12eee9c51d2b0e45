#include "include/oc_pan_cal.h"

#include <algorithm>
#include <cstdio>
#include <span>

#include "production/production_run.h"
#include "src/calibrate.h"
#include "src/console.h"
#include "src/guard.h"
#include "src/result_codes.h"
#include "src/round_half_away.h"
#include "tables/lookup_tables.h"
#include "tables/mask_transform.h"
#include "tables/overlay.h"
#include "tables/polygons.h"

using namespace ocpan;

int ocPAN_Cal(const char* config_file, qa_summary* summary) {
  if (!config_file) return OCPAN_INVALID;
  return guarded([&] { return map_result(calibrate(config_file, summary)); });
}

int ocPAN_CalProd(unsigned int camera_count, const char* calibration_path, const char* output_path,
                  float fixture_radius, const char* const* image_paths, double* results) {
  if (camera_count < 2 || camera_count > 8 || !calibration_path || !output_path) {
    return OCPAN_INVALID;
  }
  const double radius = fixture_radius;
  if (!(radius >= 0.2 && radius <= 20.0)) {
    return guarded([&] {
      print_line("fixture_radius :0.2~20,current value:", fixture_radius);
      return OCPAN_INVALID;
    });
  }
  if (!image_paths) return OCPAN_INVALID;
  const std::span<const char* const> images(image_paths, camera_count);
  if (std::ranges::count(images, nullptr) != 0) return OCPAN_INVALID;
  return guarded([&] {
    return map_result(
        calibrate_in_fixture(calibration_path, output_path, fixture_radius, images, results));
  });
}

int ocPAN_LutFromCalibration(const char* cal_file_name, const char* mask_prefix,
                             const char* output_prefix, float sphere_radius, int small_face,
                             int use_file_class) {
  if (!cal_file_name || !mask_prefix || !output_prefix) return OCPAN_INVALID;
  if (use_file_class == 1 && 0.5 > sphere_radius) return OCPAN_INVALID;  // so that NaN passes
  const int face_size = small_face ? 129 : 253;
  return guarded([&] {
    return map_result(generate_lookup_tables(cal_file_name, mask_prefix, output_prefix,
                                             sphere_radius, face_size, use_file_class != 0));
  });
}

int ocPAN_PolyFromCalibration(const char* cal_file_name, const char* mask_prefix,
                              const char* output_prefix, float sphere_radius, int use_file_class) {
  if (!cal_file_name || !mask_prefix || !output_prefix) return OCPAN_INVALID;
  if (use_file_class == 1 && 0.5 > sphere_radius) return OCPAN_INVALID;  // so that NaN passes
  return guarded([&] {
    return map_result(generate_polygons(cal_file_name, mask_prefix, output_prefix, sphere_radius,
                                        use_file_class != 0));
  });
}

int ocPAN_CreateOsd(const char* input_file, const char* output_file, int width, int height) {
  return guarded([&] { return create_overlay(input_file, output_file, width, height); });
}

int ocPAN_MaskTransform(int count, const char* const* input_files,
                        const char* const* output_files) {
  if (count < 1 || count > 8 || !input_files || !output_files) return OCPAN_INVALID;
  const std::span<const char* const> inputs(input_files, static_cast<std::size_t>(count));
  const std::span<const char* const> outputs(output_files, static_cast<std::size_t>(count));
  const auto holds_null = [](auto names) { return std::ranges::count(names, nullptr) != 0; };
  if (holds_null(inputs) || holds_null(outputs)) return OCPAN_INVALID;
  return guarded([&] { return transform_masks(inputs, outputs); });
}

int ocPAN_Version(char* buffer) {
  if (!buffer) return OCPAN_FAILURE;
  std::snprintf(buffer, 128, "%s", "V" OCPAN_VERSION);
  return OCPAN_SUCCESS;
}

// Declared by <math.h>; exported under its plain name.
extern "C" OCPAN_API double round(double x) noexcept { return round_half_away(x); }

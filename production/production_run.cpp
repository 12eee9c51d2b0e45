#include "production/production_run.h"

#include <memory>
#include <utility>

#include <opencv2/core.hpp>

#include "calfiles/create_cal.h"
#include "calfiles/selen360_cal_file.h"
#include "calibration/read_image.h"
#include "production/camera_overlap.h"
#include "production/production_report.h"
#include "production/refine_from_fixture.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

constexpr int circular_lens = 2;  // whose picture is an ellipse that touches the borders
constexpr float unused_sphere_radius = 1000.0F;
constexpr double mm_per_metre = 1000.0;
constexpr float line_radius_tolerance = 5.0F;  // percent
constexpr float line_direction_sigma = 20.0F;  // pixels
constexpr float line_position_sigma = 0.1F;    // mm

int check_count(std::size_t in_file, std::size_t pictures) {
  if (in_file == pictures) return code::success;
  print_line("Number of cameras in cal file (", in_file, ") doesn't match the number of pictures (",
             pictures, ")");
  return code::argument_invalid;
}

int read_pictures(std::vector<cv::Mat>& pictures, const std::vector<set_config>& sets,
                  const std::vector<camera_details>& details) {
  for (const set_config& set : sets) {
    const set_camera& camera = set.cameras.front();
    const camera_details& facts = details[static_cast<std::size_t>(camera.id - 1)];
    cv::Mat picture;
    const int result =
        read_image(picture, camera.files.front(), camera.file_type, facts.width, facts.height);
    if (result != code::success) return result;
    pictures.push_back(std::move(picture));
  }
  return code::success;
}

// The rim of the lower-numbered camera is held against the spokes of the other.
std::vector<camera_pair> overlapping_pairs(const rig& models,
                                           const std::vector<camera_details>& details) {
  std::vector<arc_list> rims;
  std::vector<arc_list> spokes;
  for (std::size_t c = 0; c < models.size(); ++c) {
    const auto& [width, height, hfov, lens] = details[c];
    rims.push_back(build_rim_arcs(models[c], width, height, lens == circular_lens));
    spokes.push_back(build_spoke_arcs(models[c], width, height, lens == circular_lens));
  }
  std::vector<camera_pair> pairs;
  for (std::size_t i = 0; i < models.size(); ++i) {
    for (std::size_t j = i + 1; j < models.size(); ++j) {
      if (cameras_overlap(rims[i], spokes[j])) pairs.push_back({i, j});
    }
  }
  return pairs;
}

// Hands out the results where its scope ends, however that comes: be it by an exception.
struct results_at_end {
  const prod_measures& measures;
  double* results;  // 3 numbers or null

  ~results_at_end() {
    if (!results) return;
    results[0] = measures.reprojection_max;
    results[1] = measures.reprojection_mean;
    results[2] = measures.point_count;
  }
};

}  // namespace

std::vector<set_config> production_sets(std::span<const char* const> image_paths) {
  std::vector<set_config> sets;
  for (const char* path : image_paths) {
    set_config& set = sets.emplace_back();
    set.cameras = {{static_cast<int>(sets.size()), {path}, 0}};
  }
  return sets;
}

int production_run(const char* output_path, const char* calibration_path,
                   const std::vector<set_config>& sets, float fixture_radius,
                   float radius_tolerance_percent, float direction_sigma, float position_sigma,
                   prod_measures* measures) {
  std::unique_ptr<cal> calibration;
  int result = create_cal(calibration, calibration_path, true, unused_sphere_radius);
  if (result != code::success) return result;
  const auto* file = dynamic_cast<const selen360_cal_file*>(calibration.get());
  if (!file) return result;
  result = check_count(file->models().size(), sets.size());
  if (result == code::success) result = check_count(file->details().size(), sets.size());
  if (result != code::success) return result;

  std::vector<cv::Mat> pictures;
  result = read_pictures(pictures, sets, file->details());
  if (result != code::success) return result;
  rig refined_models;
  result = refine_from_fixture(*measures, refined_models, pictures, file->models(),
                               overlapping_pairs(file->models(), file->details()),
                               static_cast<double>(fixture_radius) * mm_per_metre,
                               {radius_tolerance_percent, direction_sigma, position_sigma});
  if (result != code::success) return result;
  return selen360_cal_file(std::move(refined_models), file->details()).save(output_path);
}

int calibrate_in_fixture(const char* calibration_path, const char* output_path,
                         float fixture_radius, std::span<const char* const> image_paths,
                         double* results) {
  prod_measures measures;
  const results_at_end handed_out{measures, results};
  const int result =
      production_run(output_path, calibration_path, production_sets(image_paths), fixture_radius,
                     line_radius_tolerance, line_direction_sigma, line_position_sigma, &measures);
  if (result == code::success) write_production_report(measures, image_paths.size());
  return result;
}

}  // namespace ocpan

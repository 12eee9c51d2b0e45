#include "tools/verify/verify_run.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <system_error>

#include "calfiles/create_cal.h"
#include "calibration/read_image.h"
#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "src/result_codes.h"
#include "tables/camera_files.h"
#include "tables/cube_faces.h"
#include "tools/calibration_check.h"
#include "tools/device_preview.h"
#include "tools/messages.h"
#include "tools/verify/judge_tables.h"
#include "tools/verify/manifest_check.h"
#include "tools/verify/picture_reach.h"
#include "tools/verify/table_manifest.h"

namespace ocpan {
namespace {

constexpr float default_radius = 10;  // as the tables are made
constexpr std::size_t most_cameras = 8;

// All that one run holds.
struct verification {
  const verify_options& options;
  verified_tables& result;
  std::unique_ptr<cal> calibration;
  std::vector<cv::Mat> masks;
  std::vector<point_block> directions;
  std::vector<cube_sample> samples;
  std::vector<camera_reach> reaches;
};

using entries = std::vector<std::uint64_t>;

std::vector<point_block> positions_of(const verification& run, std::size_t camera) {
  std::vector<point_block> positions;
  // The camera is one of the calibration's.
  static_cast<void>(run.calibration->cam_project(run.directions, camera, positions));
  return positions;
}

// Takes what wasn't given from the manifest.
void settle_parameters(verification& run, const std::optional<table_manifest>& manifest) {
  const verify_options& options = run.options;
  verified_tables& result = run.result;
  result.has_manifest = manifest.has_value();
  result.project_file = options.project_file || (manifest && manifest->project_file);
  result.radius = options.radius.value_or(manifest ? manifest->radius : default_radius);
  const bool told = manifest && (manifest->face_size == 129 || manifest->face_size == 253);
  result.face_size = options.face_size.value_or(told ? manifest->face_size : 0);
}

int read_inputs(verification& run) {
  const verify_options& options = run.options;
  const std::string bad = number_that_is_none(options.calibration, run.result.project_file);
  if (!bad.empty()) {
    complain(options.calibration, " holds ", bad, "; correct it or calibrate again");
    return OCPAN_MALFORMED;
  }
  if (const int code = create_cal(run.calibration, options.calibration.c_str(),
                                  !run.result.project_file, run.result.radius)) {
    complain("CALIBRATION can't be read; the line above tells why",
             run.result.project_file ? "" : " (a project file needs --project-file)");
    return map_result(code);
  }
  for (std::size_t camera = 0; camera < run.calibration->cam_count(); ++camera) {
    const std::string name = camera_file(options.mask_prefix, camera, ".png");
    if (const int code =
            read_image(run.masks.emplace_back(), name.c_str(), 0,
                       run.calibration->cam_width(camera), run.calibration->cam_height(camera))) {
      complain("MASK_PREFIX: ", name, " can't be used; the line above tells why");
      return map_result(code);
    }
  }
  return OCPAN_SUCCESS;
}

// The face size that the first readable table fits better.
int face_size_of(const verification& run) {
  for (std::size_t camera = 0; camera < run.calibration->cam_count(); ++camera) {
    entries table;
    if (!read_device_table(table, camera_file(run.options.table_prefix, camera, ".bin")).empty()) {
      continue;
    }
    std::vector<point_block> small, large;
    static_cast<void>(run.calibration->cam_project(cube_faces(129), camera, small));
    static_cast<void>(run.calibration->cam_project(cube_faces(253), camera, large));
    return part_fitting(table, small) > part_fitting(table, large) ? 129 : 253;
  }
  return 253;
}

// The other camera whose positions a table holds, if there is one.
std::optional<std::size_t> owner_of(const verification& run, const entries& table,
                                    std::size_t camera) {
  constexpr double nearly_all = 0.99;
  for (std::size_t other = 0; other < run.calibration->cam_count(); ++other) {
    if (other == camera) continue;
    if (part_fitting(table, positions_of(run, other)) > nearly_all) return other;
  }
  return std::nullopt;
}

void verify_table(verification& run, std::size_t camera,
                  const std::vector<point_block>& positions) {
  const std::string name = camera_file(run.options.table_prefix, camera, ".bin");
  camera_reach& reach = run.reaches.emplace_back();
  reach.seen = seen_by(*run.calibration, camera, positions, run.samples, run.result.project_file);
  reach.weight.assign(run.samples.size(), 0);
  entries table;
  if (const std::string problem = read_device_table(table, name); !problem.empty()) {
    judge_unreadable(native_path(name), problem, "lut", run.result.findings);
    return;
  }
  reach.weight = weights_of(table, positions, run.samples);
  table_comparison& compared = run.result.cameras[camera].table.emplace(
      compare_table(table, positions, make_weight_map(run.masks[camera])));
  std::optional<std::size_t> owner;
  if (compared.off_positions > 0) owner = owner_of(run, table, camera);
  judge_table(compared, native_path(name), owner, run.result.findings);
}

void verify_polygon(verification& run, std::size_t camera) {
  const std::string name = camera_file(run.options.polygon_prefix, camera, ".bin");
  device_polygon polygon;
  if (const std::string problem = read_device_polygon(polygon, name); !problem.empty()) {
    judge_unreadable(native_path(name), problem, "poly", run.result.findings);
    return;
  }
  const polygon_comparison& compared = run.result.cameras[camera].polygon.emplace(
      compare_polygon(polygon, run.samples, run.reaches[camera]));
  judge_polygon(compared, native_path(name), run.result.findings);
}

// Files of more cameras than the calibration has.
void find_foreign_files(const verification& run, const std::string& prefix,
                        verify_findings& findings) {
  for (std::size_t camera = run.calibration->cam_count(); camera < most_cameras; ++camera) {
    const std::string name = native_path(camera_file(prefix, camera, ".bin"));
    std::error_code failure;
    if (!std::filesystem::exists(name, failure)) continue;
    findings.push_back({verdict::doubtful, name, "is of a camera that the calibration doesn't have",
                        "take it away if it is of another rig, or give this rig's calibration"});
  }
}

void verify_manifests(const verification& run, const std::optional<table_manifest>& of_tables,
                      const std::string& problem, verify_findings& findings) {
  const verify_options& options = run.options;
  const auto unreadable = [&](const std::string& why) {
    if (why.empty()) return;
    findings.push_back({verdict::doubtful, why, "so it can't tell what the files were made from",
                        "run oc_pan lut or oc_pan poly again"});
  };
  unreadable(problem);
  table_manifest now;
  add_inputs(now, options.calibration, options.mask_prefix, run.calibration->cam_count());
  if (of_tables) check_manifest(*of_tables, now, options.table_prefix, findings);
  if (options.polygon_prefix.empty()) return;
  std::string polygon_problem;
  const auto of_polygons = read_manifest(options.polygon_prefix, polygon_problem);
  unreadable(polygon_problem);
  if (of_polygons) check_manifest(*of_polygons, now, options.polygon_prefix, findings);
  if (of_tables && of_polygons) check_same_inputs(*of_tables, *of_polygons, findings);
}

}  // namespace

int verify_tables(verified_tables& result, const verify_options& options,
                  const std::function<void(int, int)>& progress) {
  verification run{options, result, nullptr, {}, {}, {}, {}};
  std::string manifest_problem;
  const auto manifest = read_manifest(options.table_prefix, manifest_problem);
  settle_parameters(run, manifest);
  if (const int code = read_inputs(run)) return code;
  if (result.face_size == 0) result.face_size = face_size_of(run);
  run.directions = cube_faces(result.face_size);
  run.samples = samples_on_faces(result.face_size);

  verify_manifests(run, manifest, manifest_problem, result.findings);
  find_foreign_files(run, options.table_prefix, result.findings);
  if (!options.polygon_prefix.empty()) {
    find_foreign_files(run, options.polygon_prefix, result.findings);
  }
  result.cameras.resize(run.calibration->cam_count());
  for (std::size_t camera = 0; camera < result.cameras.size(); ++camera) {
    progress(static_cast<int>(camera), static_cast<int>(result.cameras.size()));
    verify_table(run, camera, positions_of(run, camera));
    if (!options.polygon_prefix.empty()) verify_polygon(run, camera);
  }
  const cube_places places(run.samples, result.face_size);
  result.coverage = coverage_of(run.samples, places, run.reaches);
  result.overlaps = overlaps_of(run.samples, run.reaches);
  // With a table missing, what is missing with it is no news.
  const bool all_read = std::all_of(result.cameras.begin(), result.cameras.end(),
                                    [](const verified_camera& camera) { return camera.table; });
  if (all_read) {
    judge_coverage(result.coverage, result.findings);
    judge_overlaps(result.overlaps, result.findings);
  }
  for (const verify_finding& finding : result.findings) {
    result.judged = worse_of(result.judged, finding.judged);
  }
  return OCPAN_SUCCESS;
}

}  // namespace ocpan

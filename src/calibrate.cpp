#include "src/calibrate.h"

#include <algorithm>
#include <string>
#include <vector>

#include "calibration/run_calibration.h"
#include "src/console.h"
#include "src/qa_reports.h"
#include "src/read_config.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

bool has_no_files(const set_config& set) {
  return set.cameras.empty() || set.cameras.front().files.empty();
}

int check_camera_ids(const std::vector<set_config>& sets, std::size_t cameras) {
  for (const set_config& set : sets) {
    for (const set_camera& camera : set.cameras) {
      if (camera.id >= 1 && static_cast<std::size_t>(camera.id) <= cameras) continue;
      print_line("Camera id out of range 1..", cameras, ": ", camera.id);
      return code::content_malformed;
    }
  }
  return code::success;
}

void copy_measures(const run_report& report, qa_summary& summary) {
  summary.max_reprojection_error = report.max_error;
  summary.average_reprojection_error = report.average_error;
  summary.matched_point_count = report.matched_points;
  summary.total_dist_ratio = report.total_dist_ratio;
  summary.minimum_dist_ratio = report.minimum_dist_ratio;
}

}  // namespace

int read_calibration_job(std::vector<camera_details>& cameras, std::vector<set_config>& sets,
                         std::string& output_file, string_pool& pool, const char* config_file) {
  const int read = read_config(cameras, sets, output_file, pool, config_file);
  // Ahead of the reader's result: a file that can't be opened leaves no camera.
  if (cameras.size() < 2 || cameras.size() > 8) return code::argument_invalid;
  if (read != code::success) return read;
  sets.erase(std::remove_if(sets.begin(), sets.end(), has_no_files), sets.end());
  return check_camera_ids(sets, cameras.size());
}

int calibrate(const char* config_file, qa_summary* summary) {
  string_pool pool;
  std::string output_file;
  std::vector<camera_details> cameras;
  std::vector<set_config> sets;
  const int read = read_calibration_job(cameras, sets, output_file, pool, config_file);
  if (read != code::success) return read;

  run_report report;
  const int result = run_calibration(output_file, cameras, sets, report);
  if (result == code::success) {
    write_qa_reports(output_file, cameras.back().lens, report, static_cast<int>(cameras.size()));
  }
  if (summary) copy_measures(report, *summary);
  return result;
}

}  // namespace ocpan

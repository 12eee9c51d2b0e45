#include "calibration/report_regrouping.h"

#include <algorithm>

#include "src/console.h"

namespace ocpan {
namespace {

void append_group(run_report& to, const run_report& from, std::size_t g) {
  to.entry_full_boards.push_back(from.entry_full_boards[g]);
  to.entry_matched_points.push_back(from.entry_matched_points[g]);
  to.entry_max_error.push_back(from.entry_max_error[g]);
  to.entry_average_error.push_back(from.entry_average_error[g]);
  to.entry_min_distance.push_back(from.entry_min_distance[g]);
  to.entry_max_distance.push_back(from.entry_max_distance[g]);
  to.entry_distances.push_back(from.entry_distances[g]);
  to.entry_flags.push_back(from.entry_flags[g]);
}

void append_set_without_boards(run_report& to) {
  to.entry_full_boards.push_back(-1);
  to.entry_matched_points.push_back(-1);
  to.entry_max_error.push_back(-1.0);
  to.entry_average_error.push_back(-1.0);
  to.entry_min_distance.push_back(-1.0);
  to.entry_max_distance.push_back(-1.0);
  to.entry_distances.push_back({-1.0});
  to.entry_flags.push_back({false});
}

// Merges group g into the report's last entry. The average error is left as the sum of the
// groups' averages times their points, to be divided when all are in.
void merge_group(run_report& to, const run_report& from, std::size_t g) {
  to.entry_full_boards.back() += from.entry_full_boards[g];
  to.entry_matched_points.back() += from.entry_matched_points[g];
  to.entry_average_error.back() += from.entry_average_error[g] * from.entry_matched_points[g];
  to.entry_max_error.back() = std::max(to.entry_max_error.back(), from.entry_max_error[g]);
  to.entry_min_distance.back() = std::min(to.entry_min_distance.back(), from.entry_min_distance[g]);
  to.entry_max_distance.back() = std::max(to.entry_max_distance.back(), from.entry_max_distance[g]);
  auto& distances = to.entry_distances.back();
  distances.insert(distances.end(), from.entry_distances[g].begin(), from.entry_distances[g].end());
  auto& flags = to.entry_flags.back();
  flags.insert(flags.end(), from.entry_flags[g].begin(), from.entry_flags[g].end());
}

void append_merged_groups(run_report& to, const run_report& from, std::size_t first,
                          std::size_t count) {
  append_group(to, from, first);
  to.entry_average_error.back() *= from.entry_matched_points[first];
  for (std::size_t g = first + 1; g < first + count; ++g) merge_group(to, from, g);
  const int points = to.entry_matched_points.back();
  to.entry_average_error.back() = points > 0 ? to.entry_average_error.back() / points : 0.0;
}

run_report totals_of(const run_report& report) {
  run_report totals;
  totals.full_boards = report.full_boards;
  totals.max_error = report.max_error;
  totals.average_error = report.average_error;
  totals.matched_points = report.matched_points;
  totals.min_distance = report.min_distance;
  totals.max_distance = report.max_distance;
  totals.entry_cameras = report.entry_cameras;
  return totals;
}

}  // namespace

void regroup_by_set(run_report& report, const std::vector<std::size_t>& groups_per_set,
                    const std::vector<std::vector<std::uint64_t>>& set_cameras) {
  report.entry_cameras.insert(report.entry_cameras.end(), set_cameras.begin(), set_cameras.end());
  const std::size_t groups = report.entry_distances.size();
  print_line("total group : ", groups);
  for (std::size_t g = 0; g < groups; ++g) {
    print_line(report.entry_distances[g].size(), " board to be calculated in ", g, " group!");
  }

  run_report regrouped = totals_of(report);
  std::size_t first = 0;
  for (const std::size_t count : groups_per_set) {
    if (count == 0) {
      append_set_without_boards(regrouped);
    } else if (count == 1) {
      append_group(regrouped, report, first);
    } else {
      append_merged_groups(regrouped, report, first, count);
    }
    first += count;
  }
  report = regrouped;
}

}  // namespace ocpan

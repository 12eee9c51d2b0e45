#pragma once

#include <cstdint>
#include <vector>

namespace ocpan {

// The measures of a solve, and of a calibration run. The solver fills one entry per view
// group; the end of a calibration leaves one entry per set. Errors are in pixels,
// distances in the unit of board_scale, from the rig's origin to the board's.
struct run_report {
  int full_boards = 0;  // boards all of whose points were used
  double max_error = 0;
  double average_error = 0;  // mean over the used points
  int matched_points = 0;
  double min_distance = 0;
  double max_distance = 0;
  double total_dist_ratio = 0;
  double minimum_dist_ratio = 0;
  std::vector<int> entry_full_boards;
  std::vector<int> entry_matched_points;
  std::vector<double> entry_max_error;
  std::vector<double> entry_average_error;
  std::vector<double> entry_min_distance;
  std::vector<double> entry_max_distance;
  std::vector<std::vector<double>> entry_distances;       // per entry, per board
  std::vector<std::vector<bool>> entry_flags;             // per entry, per board: all points used
  std::vector<std::vector<std::uint64_t>> entry_cameras;  // per set, its camera indices from 0
};

}  // namespace ocpan

#include "solver/solve_report.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "model/projection.h"

namespace ocpan {
namespace {

using Eigen::Index;

// Measures of some shots: a group's, or all.
struct shot_measures {
  int full_boards = 0;
  double points = 0;
  double error_sum = 0;  // pixels
  double max_error = 0;
  double min_distance = std::numeric_limits<double>::infinity();
  double max_distance = 0;

  double average_error() const { return points > 0 ? error_sum / points : 0; }
  void join(const shot_measures& other) {
    full_boards += other.full_boards;
    points += other.points;
    error_sum += other.error_sum;
    max_error = std::max(max_error, other.max_error);
    min_distance = std::min(min_distance, other.min_distance);
    max_distance = std::max(max_distance, other.max_distance);
  }
};

shot_measures measure_shot(const solver_problem& problem, const solver_state& state,
                           std::size_t index) {
  const shot_reference& shot = problem.shots[index];
  const view_group& group = problem.groups[shot.group];
  const ModelPose& pose = state.poses[index];
  const Index n = group.board_points.cols();
  shot_measures measures;
  Eigen::ArrayXd x, y;
  for (std::size_t entry = 0; entry < group.cameras.size(); ++entry) {
    project_points(x, y, group.board_points, state.models[group.cameras[entry]], pose.rotation,
                   pose.translation);
    const Eigen::Matrix2Xd& observed = group.shots[shot.shot][entry];
    for (Index k = 0; k < n; ++k) {
      if (state.weights[shot.first_weight + static_cast<Index>(entry) * n + k] == 0) continue;
      const double error = std::hypot(observed(0, k) - x[k], observed(1, k) - y[k]);
      measures.points += 1;
      measures.error_sum += error;
      measures.max_error = std::max(measures.max_error, error);
    }
  }
  const Index all = n * static_cast<Index>(group.cameras.size());
  measures.full_boards = measures.points == static_cast<double>(all) ? 1 : 0;
  measures.min_distance = measures.max_distance = pose.translation.norm();
  return measures;
}

}  // namespace

void fill_report(run_report& report, const solver_problem& problem, const solver_state& state) {
  std::vector<shot_measures> per_group(problem.groups.size());
  shot_measures total;
  report.entry_distances.assign(problem.groups.size(), {});
  report.entry_flags.assign(problem.groups.size(), {});
  for (std::size_t i = 0; i < problem.shots.size(); ++i) {
    const shot_measures shot = measure_shot(problem, state, i);
    const std::size_t g = problem.shots[i].group;
    per_group[g].join(shot);
    total.join(shot);
    report.entry_distances[g].push_back(state.poses[i].translation.norm());
    report.entry_flags[g].push_back(shot.full_boards == 1);
  }
  if (problem.shots.empty()) total.min_distance = 0;

  report.full_boards = total.full_boards;
  report.max_error = total.max_error;
  report.average_error = total.average_error();
  report.matched_points = static_cast<int>(total.points);
  report.min_distance = total.min_distance;
  report.max_distance = total.max_distance;
  report.entry_full_boards.clear();
  report.entry_matched_points.clear();
  report.entry_max_error.clear();
  report.entry_average_error.clear();
  report.entry_min_distance.clear();
  report.entry_max_distance.clear();
  for (const shot_measures& group : per_group) {
    report.entry_full_boards.push_back(group.full_boards);
    report.entry_matched_points.push_back(static_cast<int>(group.points));
    report.entry_max_error.push_back(group.max_error);
    report.entry_average_error.push_back(group.average_error());
    report.entry_min_distance.push_back(group.min_distance);
    report.entry_max_distance.push_back(group.max_distance);
  }
}

}  // namespace ocpan

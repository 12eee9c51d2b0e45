#include "tools/adjust/start_places.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "model/board_pose.h"
#include "model/projection.h"

namespace ocpan {
namespace {

constexpr double least_sigma = 1e-4;   // pixels, so that exact corners can be weighed
constexpr double most_correction = 4;  // of the variance by the numbers fitted
constexpr double start_share = 0.9;    // of the corners, while boards are laid
constexpr double clear_misfit = 1.0;   // pixels; beyond it a pose is just wrong

bool is_finite(const ModelPose& pose) {
  return pose.rotation.allFinite() && pose.translation.allFinite();
}

// How badly a place fits: hardly worse for one camera that is far off than for one that is
// a little off, so that the place most cameras agree on wins.
double misfit(const adjustment_problem& problem, const adjustment_state& state, std::size_t board) {
  double sum = 0;
  for (std::size_t v = 0; v < problem.boards[board].cameras.size(); ++v) {
    const Eigen::Matrix2Xd residuals = view_residuals(problem, state, board, v);
    for (const auto& residual : residuals.colwise()) {
      const double square = residual.squaredNorm() / (clear_misfit * clear_misfit);
      sum += std::log1p(square < 1e12 ? square : 1e12);
    }
  }
  return sum;
}

std::vector<ModelPose> candidate_poses(const seen_board& board, const rig& models) {
  rig seen_by;
  for (const std::size_t camera : board.cameras) seen_by.push_back(models[camera]);
  std::vector<ModelPose> poses = {estimate_board_pose(board.corners, board.points, seen_by)};
  for (std::size_t v = 0; v < seen_by.size() && seen_by.size() > 1; ++v) {
    poses.push_back(estimate_board_pose({board.corners[v]}, board.points, {seen_by[v]}));
  }
  return poses;
}

}  // namespace

Eigen::Matrix2Xd view_residuals(const adjustment_problem& problem, const adjustment_state& state,
                                std::size_t board, std::size_t view) {
  const seen_board& seen = problem.boards[board];
  const std::size_t physical = problem.physical.of_seen[board];
  const camera_state& camera = state.cameras[seen.cameras[view]];
  Eigen::Matrix3Xd points;
  bend_points(points, problem.physical.shapes[physical], state.bends[physical]);
  const Eigen::Matrix3Xd in_camera = camera.rig_from_camera.transpose() *
                                     ((state.places[board].rig_from_board * points).colwise() +
                                      (state.places[board].origin - camera.centre));
  Eigen::ArrayXd x, y;
  project_points(x, y, in_camera, camera.lens, Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
  Eigen::Matrix2Xd residuals = seen.corners[view];
  residuals.row(0) -= x.matrix().transpose();
  residuals.row(1) -= y.matrix().transpose();
  return residuals;
}

double sigma_of(const adjustment_problem& problem, const adjustment_state& state, double share,
                Eigen::Index moving) {
  std::vector<double> distances;
  for (std::size_t b = 0; b < problem.boards.size(); ++b) {
    for (std::size_t v = 0; v < problem.boards[b].cameras.size(); ++v) {
      if (problem.set_aside[b][v]) continue;
      const Eigen::Matrix2Xd residuals = view_residuals(problem, state, b, v);
      for (const auto& residual : residuals.colwise()) {
        const double distance = residual.norm();
        distances.push_back(std::isfinite(distance) ? distance : 1e6);
      }
    }
  }
  if (distances.empty()) return least_sigma;
  const auto at = static_cast<std::ptrdiff_t>(share * static_cast<double>(distances.size() - 1));
  std::nth_element(distances.begin(), distances.begin() + at, distances.end());
  const double quantile = std::sqrt(-2 * std::log(1 - share));  // of Rayleigh's distribution
  const double coordinates = 2 * static_cast<double>(distances.size());
  const double free =
      std::max(coordinates - static_cast<double>(moving), coordinates / most_correction);
  return std::max(least_sigma, distances[static_cast<std::size_t>(at)] / quantile *
                                   std::sqrt(coordinates / free));
}

void place_board(adjustment_problem& problem, adjustment_state& state, std::size_t board,
                 const rig& models) {
  std::optional<double> best;
  board_place best_place = state.places[board];
  for (const ModelPose& pose : candidate_poses(problem.boards[board], models)) {
    if (!is_finite(pose)) continue;
    state.places[board] = place_of(pose);
    const double its_misfit = misfit(problem, state, board);
    if (best && its_misfit >= *best) continue;
    best = its_misfit;
    best_place = state.places[board];
  }
  state.places[board] = best_place;
  if (!best) std::fill(problem.set_aside[board].begin(), problem.set_aside[board].end(), true);
}

void place_boards_before(adjustment_problem& problem, adjustment_state& state) {
  rig models;
  for (const camera_state& camera : state.cameras) models.push_back(join_camera(camera));
  for (std::size_t b = 0; b < problem.boards.size(); ++b) place_board(problem, state, b, models);
  const bool was_fixed = problem.fixed_rig;
  problem.fixed_rig = true;
  problem.sigma = sigma_of(problem, state, start_share, 0);
  state = minimise(problem, state).state;
  problem.sigma = sigma_of(problem, state, start_share, 0);
  problem.fixed_rig = was_fixed;
}

}  // namespace ocpan

#include "tools/adjust/adjust_rig.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <Eigen/Cholesky>
#include <Eigen/Geometry>

#include "tools/adjust/adjustment.h"
#include "tools/adjust/lens_reach.h"
#include "tools/adjust/robust_loss.h"
#include "tools/adjust/start_places.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;

constexpr int most_rounds = 20;
constexpr double settled = 0.001;     // relative change of sigma
constexpr double misfit_medians = 6;  // median distance of a view that is set aside, in medians

// The rig turned about camera 0, whose frame ends where `frame` says.
void turn_rig(std::vector<camera_state>& cameras, const Matrix3d& frame) {
  const Matrix3d turn = frame * cameras.front().rig_from_camera.transpose();
  const Eigen::Vector3d pivot = cameras.front().centre;
  for (camera_state& camera : cameras) {
    camera.rig_from_camera = turn * camera.rig_from_camera;
    camera.centre = turn * (camera.centre - pivot) + pivot;
  }
}

// A's and H's frame of a model as it is.
Matrix3d frame_of(model_map model) {
  model[rho_0] = 0;
  return split_camera(model).rig_from_camera;
}

double typical_distance(const adjustment_state& state) {
  std::vector<double> distances;
  for (const board_place& place : state.places) {
    distances.push_back((place.origin - state.cameras.front().centre).norm());
  }
  if (distances.empty()) return 1;
  const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
  std::nth_element(distances.begin(), middle, distances.end());
  return std::max(*middle, 1e-9);
}

adjustment_problem problem_of(const rig& models, const std::vector<camera_details>& details,
                              const std::vector<seen_board>& boards) {
  adjustment_problem problem{boards, details, tell_boards_apart(boards)};
  for (const model_map& model : models) problem.start.cameras.push_back(split_camera(model));
  problem.start.places.resize(boards.size(), {Matrix3d::Identity(), Eigen::Vector3d::Zero()});
  problem.start.bends.resize(problem.physical.shapes.size());
  for (const seen_board& board : boards) {
    problem.set_aside.emplace_back(board.cameras.size(), false);
  }
  return problem;
}

// The corner that each camera saw farthest from its picture's middle, if its lens reaches it.
std::vector<std::optional<Eigen::Vector2d>> reach_of(const adjustment_problem& problem) {
  std::vector<std::optional<Eigen::Vector2d>> reach(problem.details.size());
  std::vector<double> farthest(problem.details.size(), -1);
  for (const seen_board& board : problem.boards) {
    for (std::size_t v = 0; v < board.cameras.size(); ++v) {
      const std::size_t c = board.cameras[v];
      const Eigen::Vector2d middle(problem.details[c].width * 0.5, problem.details[c].height * 0.5);
      for (const auto& corner : board.corners[v].colwise()) {
        const double distance = (corner - middle).norm();
        if (!(distance > farthest[c])) continue;
        farthest[c] = distance;
        reach[c] = corner;
      }
    }
  }
  for (std::size_t c = 0; c < reach.size(); ++c) {
    if (reach[c] && !lens_reaches(problem.start.cameras[c].lens, *reach[c])) reach[c].reset();
  }
  return reach;
}

Eigen::Index moving_numbers(const adjustment_problem& problem) {
  Eigen::Index places = 0;
  for (std::size_t b = 0; b < problem.boards.size(); ++b) places += counts(problem, b) ? 6 : 0;
  return places + (problem.fixed_rig ? 0 : problem.shared_columns());
}

double median_distance(const Eigen::Matrix2Xd& residuals) {
  std::vector<double> distances;
  for (const auto& residual : residuals.colwise()) {
    const double distance = residual.norm();
    distances.push_back(std::isfinite(distance) ? distance : 1e6);
  }
  const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
  std::nth_element(distances.begin(), middle, distances.end());
  return *middle;
}

// The largest median distance of a view that counts.
double misfit_limit(double sigma) { return misfit_medians * std::sqrt(2 * std::log(2.0)) * sigma; }

// Lays boards anew that one of their views doesn't fit: while sigma was large their place may
// have been drawn to between two views that contradict one another.
void lay_again(adjustment_problem& problem, adjustment_state& state) {
  rig models;
  for (const camera_state& camera : state.cameras) models.push_back(join_camera(camera));
  for (std::size_t b = 0; b < problem.boards.size(); ++b) {
    bool fits = true;
    for (std::size_t v = 0; v < problem.boards[b].cameras.size(); ++v) {
      fits &= problem.set_aside[b][v] ||
              median_distance(view_residuals(problem, state, b, v)) <= misfit_limit(problem.sigma);
    }
    if (!fits) place_board(problem, state, b, models);
  }
}

// Sets the views aside most of whose corners are far off, and takes those back that fit by
// now. Tells whether anything changed.
bool sort_out_views(adjustment_problem& problem, const adjustment_state& state) {
  bool changed = false;
  for (std::size_t b = 0; b < problem.boards.size(); ++b) {
    for (std::size_t v = 0; v < problem.boards[b].cameras.size(); ++v) {
      const bool fits =
          median_distance(view_residuals(problem, state, b, v)) <= misfit_limit(problem.sigma);
      changed |= problem.set_aside[b][v] == fits;
      problem.set_aside[b][v] = !fits;
    }
  }
  return changed;
}

// Minimises, with sigma and the views that count renewed until both stay.
minimum settle(adjustment_problem& problem, const adjustment_state& start) {
  minimum at{start, 0, 0, false};
  int steps = 0;
  for (int round = 0; round < most_rounds; ++round) {
    at = minimise(problem, at.state);
    steps += at.iterations;
    const double before = problem.sigma;
    problem.sigma = sigma_of(problem, at.state, 0.5, moving_numbers(problem));
    lay_again(problem, at.state);
    const bool changed = sort_out_views(problem, at.state);
    if (!changed && std::abs(problem.sigma - before) < settled * before) break;
  }
  at.iterations = steps;
  return at;
}

// Whether the boards' bends lower the cost by more than so many numbers do by chance: by
// the logarithm of the number of coordinates for each (Schwarz, Estimating the dimension of a
// model, 1978).
bool bend_is_borne(adjustment_problem& problem, const minimum& flat) {
  double coordinates = 0;
  for (const seen_board& board : problem.boards) {
    for (const Eigen::Matrix2Xd& corners : board.corners) {
      coordinates += static_cast<double>(corners.size());
    }
  }
  const double flat_cost = minimise(problem, flat.state).cost;
  problem.bent = true;
  const double bent_cost = minimise(problem, flat.state).cost;
  problem.bent = false;
  const double numbers = 2 * static_cast<double>(problem.physical.shapes.size());
  return flat_cost - bent_cost > numbers * std::log(std::max(2.0, coordinates));
}

std::vector<board_fit> fits_of(const adjustment_problem& problem, const adjustment_state& state) {
  std::vector<board_fit> fits;
  for (std::size_t b = 0; b < problem.boards.size(); ++b) {
    board_fit& fit = fits.emplace_back();
    fit.pose = pose_of(state.places[b]);
    fit.set_aside = problem.set_aside[b];
    for (std::size_t v = 0; v < problem.boards[b].cameras.size(); ++v) {
      const Eigen::Matrix2Xd residuals = view_residuals(problem, state, b, v);
      fit.weights.push_back((residuals.colwise().squaredNorm() / (problem.sigma * problem.sigma))
                                .transpose()
                                .array()
                                .unaryExpr([](double square) { return loss_of(square).weight; }));
      fit.residuals.push_back(residuals);
    }
  }
  return fits;
}

// The inverse of the normal equations with the boards' places eliminated; the bends, if any,
// are eliminated with them.
Eigen::MatrixXd camera_covariance(const adjustment_problem& problem,
                                  const adjustment_state& state) {
  view_room room;
  const reduced_equations reduced = reduce(problem, linearise(problem, state, room), 0);
  const Eigen::MatrixXd inverse = reduced.shared.ldlt().solve(
      Eigen::MatrixXd::Identity(reduced.shared.rows(), reduced.shared.cols()));
  return inverse.topLeftCorner(problem.camera_columns(), problem.camera_columns());
}

adjusted_rig result_of(const adjustment_problem& problem, const minimum& at) {
  adjusted_rig result;
  for (const camera_state& camera : at.state.cameras) result.models.push_back(join_camera(camera));
  result.boards = fits_of(problem, at.state);
  result.physical = problem.physical.of_seen;
  result.bends = at.state.bends;
  result.sigma = problem.sigma;
  result.cost = at.cost;
  result.iterations = at.iterations;
  result.converged = at.converged;
  result.covariance = camera_covariance(problem, at.state);
  return result;
}

// What the boards cost before the rig as it was, seen with the eyes of a refinement: its
// sigma and the views that count for it.
minimum as_it_was(const adjustment_problem& refined) {
  adjustment_problem problem = refined;
  problem.fixed_rig = true;
  return minimise(problem, problem.start);
}

}  // namespace

adjusted_rig adjust_rig(const rig& models, const std::vector<camera_details>& details,
                        const std::vector<seen_board>& boards, const adjust_options& options) {
  adjustment_problem problem = problem_of(models, details, boards);
  turn_rig(problem.start.cameras, frame_of(models.front()));
  place_boards_before(problem, problem.start);
  problem.typical_distance = typical_distance(problem.start);
  problem.tie = options.tie;
  problem.reach = reach_of(problem);
  problem.bent = options.bend == bend_choice::bent;
  minimum at = settle(problem, problem.start);
  if (options.bend == bend_choice::if_borne && bend_is_borne(problem, at)) {
    problem.bent = true;
    const int before = at.iterations;
    at = settle(problem, at.state);
    at.iterations += before;
  }
  if (options.only_if_better) {
    const minimum before = as_it_was(problem);
    if (before.cost - at.cost < 2 * static_cast<double>(problem.shared_columns())) {
      problem.bent = false;
      adjusted_rig result = result_of(problem, before);
      result.models = models;
      result.kept = true;
      return result;
    }
  }
  return result_of(problem, at);
}

adjusted_rig measure_rig(const rig& models, const std::vector<camera_details>& details,
                         const std::vector<seen_board>& boards,
                         const std::vector<board_bend>& bends) {
  adjustment_problem problem = problem_of(models, details, boards);
  if (!bends.empty()) problem.start.bends = bends;
  problem.bent = !bends.empty();
  place_boards_before(problem, problem.start);
  problem.typical_distance = typical_distance(problem.start);
  problem.fixed_rig = true;
  const minimum at = settle(problem, problem.start);
  problem.fixed_rig = false;
  adjusted_rig result = result_of(problem, at);
  result.models = models;
  return result;
}

}  // namespace ocpan

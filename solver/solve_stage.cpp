#include "solver/solve_stage.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solver/linearisation.h"
#include "solver/problem.h"
#include "solver/solve_report.h"
#include "solver/try_step.h"

namespace ocpan {
namespace {

// d is the change of the cost, at a state whose cost was `cost`.
bool converged(double d, double cost, int iteration, const solve_settings& settings) {
  return std::abs(d) < settings.abs_tol || std::abs(d / cost) < settings.rel_tol ||
         static_cast<double>(iteration) > settings.max_iterations;
}

// Tells a solve that can go on for ever: a step is judged with the projection's clamps
// against a cost without them, so where a point stays beyond a clamp every step falls, and
// by the same amount. Each step that really falls leaves the lowest error behind.
class standstill {
 public:
  // squared_error is that of an accepted step, in pixels squared, least_fall its least
  // change that counts. True at the hundredth step in a row without one.
  bool reached(double squared_error, double least_fall) {
    steps_ = squared_error < lowest_ - least_fall ? 0 : steps_ + 1;
    lowest_ = std::min(lowest_, squared_error);
    return steps_ >= most_steps;
  }

 private:
  static constexpr int most_steps = 100;
  double lowest_ = std::numeric_limits<double>::infinity();
  int steps_ = 0;
};

solver_state refine(const solver_problem& problem, solver_state state) {
  constexpr double least_damping = 1e-300;  // at 0 it could never climb again
  double damping = 0.01;
  double sigma = 3.0;  // pixels
  column_scales scales(problem.layout);
  const double free_columns = static_cast<double>(problem.layout.camera_columns());
  standstill standing;
  for (int iteration = 0;; ++iteration) {
    const linearisation at = linearise(problem, state, sigma, scales);
    const bool reject_now = problem.settings.reject && (iteration + 1) % 5 == 0;
    auto step = first_falling_step(problem, state, at, scales, damping, sigma, reject_now);
    if (!step) return state;
    const bool done =
        converged(step->cost - at.cost, at.cost, iteration, problem.settings) ||
        standing.reached(step->squared_error, problem.settings.abs_tol * sigma * sigma);
    damping = std::max(0.1 * damping, least_damping);
    state = std::move(step->state);
    sigma = std::sqrt(step->squared_error / (at.sample_count - free_columns));
    if (done) return state;  // a converged step is still taken
  }
}

}  // namespace

void solve_stage(run_report& report, rig& models_out, std::vector<view_group>& groups_out,
                 const rig& models, const std::vector<view_group>& groups,
                 const std::vector<std::vector<parameter_name>>& free_params,
                 const std::vector<pose_param_name>& free_pose,
                 const std::vector<constraint_term>& camera_terms,
                 const std::vector<pose_term>& pose_terms, const solve_settings& settings) {
  const solver_problem problem =
      make_problem(groups, free_params, free_pose, camera_terms, pose_terms, settings);
  solver_state state = start_state(problem, models);
  if (!problem.shots.empty()) state = refine(problem, std::move(state));
  fill_report(report, problem, state);

  std::vector<view_group> refined = groups;
  for (std::size_t i = 0; i < problem.shots.size(); ++i) {
    refined[problem.shots[i].group].poses[problem.shots[i].shot] = state.poses[i];
  }
  models_out = std::move(state.models);
  groups_out = std::move(refined);
}

}  // namespace ocpan

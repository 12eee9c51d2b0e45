#pragma once

#include <optional>

#include "solver/linearisation.h"
#include "solver/problem.h"

namespace ocpan {

// A damped step and what it leads to.
struct trial_step {
  solver_state state;
  double squared_error = 0;  // pixels squared, before the division by sigma squared
  double cost = 0;           // squared_error / sigma^2, image residuals only
};

// Solves the equations damped by adding damping to their diagonal, and evaluates where the
// step leads, with the projection's clamps.
//
//   reject_now   also sets the weight of each point whose squared residual reaches
//                reject_limit max(1, sigma)^2 to 0 in the trial's state; its residual
//                still counts in this trial's squared_error
//
// Equations that aren't finite give a step, and so a cost, that is not a number.
trial_step try_step(const solver_problem& problem, const solver_state& state,
                    const linearisation& at, const column_scales& scales, double damping,
                    double sigma, bool reject_now);

// The first trial whose cost is strictly below that of the linearisation. After each
// refused one damping grows by half; none if damping passes 1e10.
std::optional<trial_step> first_falling_step(const solver_problem& problem,
                                             const solver_state& state, const linearisation& at,
                                             const column_scales& scales, double& damping,
                                             double sigma, bool reject_now);

}  // namespace ocpan

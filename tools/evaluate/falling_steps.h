#pragma once

#include <utility>

namespace ocpan {

// Levenberg-Marquardt over any state: takes falling steps until they hardly fall.
//
//   cost_of      double (state); a cost that isn't a number refuses the state
//   trial_from   state (state, damping): where the equations, with damping times their
//                diagonal added, lead
template <typename State, typename Cost, typename Trial>
State after_falling_steps(State state, const Cost& cost_of, const Trial& trial_from) {
  constexpr int most_trials = 100;
  constexpr double least_relative_fall = 1e-12;
  constexpr double most_damping = 1e6;
  double damping = 1e-4;
  double cost = cost_of(state);
  for (int trials = 0; trials < most_trials && damping <= most_damping; ++trials) {
    State trial = trial_from(state, damping);
    const double trial_cost = cost_of(trial);
    if (!(trial_cost < cost)) {
      damping *= 10;
      continue;
    }
    const bool done = cost - trial_cost <= least_relative_fall * cost;
    state = std::move(trial);
    cost = trial_cost;
    damping *= 0.1;
    if (done) break;
  }
  return state;
}

}  // namespace ocpan

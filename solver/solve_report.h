#pragma once

#include "solver/problem.h"
#include "src/run_report.h"

namespace ocpan {

// Fills the report's totals and its lists, one entry per group, from a state: errors with
// the projection's clamps, over the points of weight 1.
void fill_report(run_report& report, const solver_problem& problem, const solver_state& state);

}  // namespace ocpan

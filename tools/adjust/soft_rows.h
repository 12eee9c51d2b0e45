#pragma once

#include <vector>

#include "tools/adjust/adjustment.h"

namespace ocpan {

// The soft rows of an adjustment at a state: weak priors that only speak where the boards say
// nothing, and, with a tie, rows that hold each lens near the mean of its kind. Cameras are
// of one kind if their details are the same.
std::vector<soft_row> soft_rows(const adjustment_problem& problem, const adjustment_state& state);

}  // namespace ocpan

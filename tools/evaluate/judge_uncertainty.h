#pragma once

#include "tools/evaluate/evaluation.h"
#include "tools/evaluate/judge_evaluation.h"
#include "tools/evaluate/rig_uncertainty.h"

namespace ocpan {

inline constexpr verdict_limits mapping_uncertainty_limits = {1, 4};   // pixels
inline constexpr verdict_limits seam_uncertainty_limits = {0.1, 0.5};  // degrees

// Adds what the boards leave open to the findings and the verdict.
void judge_uncertainty(evaluation& result, const rig_uncertainty& uncertainty);

}  // namespace ocpan

#pragma once

#include "tools/evaluate/evaluation.h"
#include "tools/evaluate/hold_out.h"
#include "tools/evaluate/judge_evaluation.h"

namespace ocpan {

inline constexpr verdict_limits scatter_pixel_limits = {1, 4};     // of a camera
inline constexpr verdict_limits scatter_turn_limits = {0.1, 0.5};  // of a pair, degrees

// Adds what the calibrations from parts of the frames tell to the findings and the verdict.
void judge_hold_out(evaluation& result, const hold_out& tested);

}  // namespace ocpan

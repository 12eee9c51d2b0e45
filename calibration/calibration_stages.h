#pragma once

#include <vector>

#include "calibration/board_groups.h"
#include "calibration/frame_sets.h"
#include "model/constraint_terms.h"
#include "model/parameters.h"
#include "src/run_report.h"

namespace ocpan {

// Finds the boards, calibrates each lens alone, places the cameras by the boards that
// pairs of them saw, and refines lenses and rig together. Prints a banner per step.
//
//   report          measures of the last solve, one entry per set; ratios are left alone
//   models_out      the refined rig, one model per camera
//   frame_sets      the sets; a set whose files are used up gets its ran_out flag
//   initial_models  one per camera
//   constraints     the soft terms of every solve
//
// Always gives 0: frames without a board, unreadable pictures and pairs without common
// views only reduce the data.
[[nodiscard]] int calibration_stages(run_report& report, rig& models_out,
                                     std::vector<cal_frame_set>& frame_sets,
                                     const rig& initial_models,
                                     const std::vector<constraint_term>& constraints);

// The same from boards that were found before.
//
//   frames   per set and frame the views, side by side with the set's cameras
void calibrate_from_boards(run_report& report, rig& models_out,
                           const std::vector<cal_frame_set>& frame_sets, const board_frames& frames,
                           const rig& initial_models,
                           const std::vector<constraint_term>& constraints);

}  // namespace ocpan

#include "calibration/calibration_stages.h"

#include "calibration/board_groups.h"
#include "calibration/chessboard_detection.h"
#include "calibration/report_regrouping.h"
#include "calibration/rig_placement.h"
#include "solver/solve_stage.h"
#include "solver/stage_lists.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

void print_banner(const char* text) {
  print_line("");
  print_line(text);
  print_line("");
}

// One solve of the run: refines models and groups in place.
void solve(run_report& report, rig& models, std::vector<view_group>& groups,
           const free_parameters& free, const std::vector<constraint_term>& constraints,
           bool reject) {
  solve_settings settings;
  settings.reject = reject;
  solve_stage(report, models, groups, models, groups, free, free_poses(), constraints, {},
              settings);
}

std::vector<std::vector<std::uint64_t>> cameras_of(const std::vector<cal_frame_set>& sets) {
  std::vector<std::vector<std::uint64_t>> cameras;
  for (const cal_frame_set& set : sets) cameras.push_back(set.camera_indices);
  return cameras;
}

}  // namespace

void calibrate_from_boards(run_report& report, rig& models_out,
                           const std::vector<cal_frame_set>& frame_sets, const board_frames& frames,
                           const rig& initial_models,
                           const std::vector<constraint_term>& constraints) {
  const std::size_t cameras = initial_models.size();
  rig models = initial_models;
  run_report unused;

  print_banner("-----------Step 2. Initial lens calibration-----------");
  std::vector<view_group> lens_groups = single_camera_groups(frame_sets, frames, models);

  print_banner("-----------Step 2-1. Optimise parameters-----------");
  solve(unused, models, lens_groups, free_for_lenses(cameras), constraints, false);

  print_banner("-----------Step 3. Estimate and then refine camera pose-----------");
  models = place_cameras(models, collect_pair_points(frame_sets, frames, models));
  rig_groups shared = shared_board_groups(frame_sets, frames, models);
  solve(unused, models, shared.groups, free_for_rig(cameras), constraints, true);

  print_banner("-----------Step 4. Full re-optimisation-----------");
  solve(report, models, shared.groups, free_for_all(cameras), constraints, true);
  models_out = models;

  regroup_by_set(report, shared.groups_per_set, cameras_of(frame_sets));
  print_line("");
  print_line("-----------Model calibration finished!-----------");
}

int calibration_stages(run_report& report, rig& models_out, std::vector<cal_frame_set>& frame_sets,
                       const rig& initial_models, const std::vector<constraint_term>& constraints) {
  print_banner("-----------Step 1. Chessboard detection-----------");
  const board_frames frames = detect_boards(frame_sets);
  calibrate_from_boards(report, models_out, frame_sets, frames, initial_models, constraints);
  return code::success;
}

}  // namespace ocpan

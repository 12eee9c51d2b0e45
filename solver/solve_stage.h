#pragma once

#include <vector>

#include "model/constraint_terms.h"
#include "model/parameters.h"
#include "model/pose.h"
#include "solver/view_group.h"
#include "src/run_report.h"

namespace ocpan {

// How a solve runs and when it ends.
struct solve_settings {
  double reject_limit = 24.0;    // squared residual over max(1, sigma)^2 beyond which a point goes
  bool reject = false;           // whether points are rejected at all
  double abs_tol = 1e-4;         // ends when the cost changes by less
  double rel_tol = 1e-16;        // ends when the cost's relative change is smaller
  double max_iterations = 1e10;  // ends when the count of accepted steps passes this
  bool terms_in_sigma = false;   // divide term rows by the running sigma too
};

// Refines camera models and board poses by a Levenberg-Marquardt bundle adjustment with a
// Schur complement over the poses (Triggs et al., Bundle Adjustment - A Modern Synthesis,
// 2000), with a noise estimate renewed at every accepted step.
//
//   report        measures at the result, one entry per group; ratios and entry_cameras
//                 are left alone
//   models_out    the refined rig; each model holds all 18 parameters
//   groups_out    the groups with refined poses
//   models        the rig to start from
//   groups        what was seen
//   free_params   per camera, what may move; L stands for its variable LAMBDA
//   free_pose     what may move of every pose
//   camera_terms  soft rows over the rig; they steer the step but don't judge it
//   pose_terms    soft rows over every pose, likewise
//
// Reports nothing. Numbers that aren't finite end the solve at the last accepted state,
// and so do a hundred steps in a row that leave the error where it was.
// Without a shot the models come back as they are, but for LAMBDA. An output may be the
// same object as its input. Runs on one thread.
void solve_stage(run_report& report, rig& models_out, std::vector<view_group>& groups_out,
                 const rig& models, const std::vector<view_group>& groups,
                 const std::vector<std::vector<parameter_name>>& free_params,
                 const std::vector<pose_param_name>& free_pose,
                 const std::vector<constraint_term>& camera_terms,
                 const std::vector<pose_term>& pose_terms, const solve_settings& settings);

}  // namespace ocpan

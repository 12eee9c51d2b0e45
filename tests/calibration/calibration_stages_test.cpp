#include "calibration/calibration_stages.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "calibration/report_regrouping.h"
#include "calibration/rig_constraints.h"
#include "calibration/rig_placement.h"
#include "solver/solve_stage.h"
#include "solver/stage_lists.h"
#include "tests/solver/synthetic_scene.h"
#include "tests/support/captured_output.h"

namespace ocpan {
namespace {

using testing::printed_by;

// What two cameras side by side saw in three sets, with noise and one corner that is far
// off; camera 1 misses the board in the last frame of the pair.
struct boards_of_a_pair {
  boards_of_a_pair() {
    std::mt19937 random(3);
    std::normal_distribution<double> noise(0, 0.2);
    for (const std::vector<std::uint64_t>& cameras :
         {std::vector<std::uint64_t>{0}, std::vector<std::uint64_t>{1},
          std::vector<std::uint64_t>{0, 1}}) {
      cal_frame_set set;
      set.camera_indices = cameras;
      set.board_width = 6;
      set.board_height = 5;
      set.board_scale = 30;
      const std::vector<std::size_t> seen_by(cameras.begin(), cameras.end());
      const view_group shot = testing::shoot(truth(), seen_by, 4, 7);
      std::vector<frame_views>& views = frames.emplace_back();
      for (const auto& shot_views : shot.shots) {
        frame_views& frame = views.emplace_back();
        for (Eigen::Matrix2Xd view : shot_views) {
          for (Eigen::Index k = 0; k < view.size(); ++k) view.data()[k] += noise(random);
          frame.push_back({true, view});
        }
      }
      sets.push_back(set);
    }
    frames[2][3][1] = {};
    frames[2][1][0].corners(0, 8) += 40;
  }
  static rig truth() {
    rig models = testing::side_by_side(2);
    for (model_map& model : models) {
      model[H_0] *= 1.01;
      model[V_1] *= 1.01;
    }
    return models;
  }

  std::vector<cal_frame_set> sets;
  board_frames frames;
  std::vector<camera_details> details{{900, 700, 80, 0}, {900, 700, 80, 0}};
  rig start = rig(2, initial_model({900, 700, 80, 0}));
  std::vector<constraint_term> constraints = rig_constraints(details);
};

solve_settings settings_of(bool reject) {
  solve_settings settings;
  settings.reject_limit = 24.0;
  settings.reject = reject;
  settings.abs_tol = 0.0001;
  settings.rel_tol = 1e-16;
  settings.max_iterations = 1e10;
  settings.terms_in_sigma = false;
  return settings;
}

TEST(CalibrationStages, RunTheSolvesOneAfterAnother) {
  const boards_of_a_pair boards;
  run_report report;
  rig models;
  printed_by([&] {
    calibrate_from_boards(report, models, boards.sets, boards.frames, boards.start,
                          boards.constraints);
  });

  run_report unused, expected;
  rig lenses, placed, rig_models, all;
  auto groups = single_camera_groups(boards.sets, boards.frames, boards.start);
  solve_stage(unused, lenses, groups, boards.start, groups, free_for_lenses(2), free_poses(),
              boards.constraints, {}, settings_of(false));
  placed = place_cameras(lenses, collect_pair_points(boards.sets, boards.frames, lenses));
  rig_groups shared = shared_board_groups(boards.sets, boards.frames, placed);
  solve_stage(unused, rig_models, shared.groups, placed, shared.groups, free_for_rig(2),
              free_poses(), boards.constraints, {}, settings_of(true));
  solve_stage(expected, all, shared.groups, rig_models, shared.groups, free_for_all(2),
              free_poses(), boards.constraints, {}, settings_of(true));
  printed_by([&] { regroup_by_set(expected, shared.groups_per_set, {{0}, {1}, {0, 1}}); });

  EXPECT_EQ(shared.groups_per_set, (std::vector<std::size_t>{1, 1, 2}));
  EXPECT_EQ(models, all);
  EXPECT_EQ(report.matched_points, expected.matched_points);
  EXPECT_EQ(report.average_error, expected.average_error);
  EXPECT_EQ(report.entry_average_error, expected.entry_average_error);
  EXPECT_EQ(report.entry_distances, expected.entry_distances);
  EXPECT_EQ(report.entry_flags, expected.entry_flags);
  EXPECT_EQ(report.entry_cameras, expected.entry_cameras);
  // The corner that is far off was rejected.
  EXPECT_EQ(report.matched_points, 4 * 30 + 4 * 30 + 7 * 30 - 1);
  EXPECT_EQ(report.full_boards, 11);
}

TEST(CalibrationStages, AnnounceEachStepAndRunOnWithoutABoard) {
  boards_of_a_pair boards;
  for (auto& frames : boards.frames) frames.assign(frames.size(), {{}, {}});
  run_report report;
  rig models;
  EXPECT_EQ(printed_by([&] {
              calibrate_from_boards(report, models, boards.sets, boards.frames, boards.start,
                                    boards.constraints);
            }),
            "\n-----------Step 2. Initial lens calibration-----------\n\n"
            "\n-----------Step 2-1. Optimise parameters-----------\n\n"
            "\n-----------Step 3. Estimate and then refine camera pose-----------\n\n"
            "\n-----------Step 4. Full re-optimisation-----------\n\n"
            "total group : 0\n"
            "\n-----------Model calibration finished!-----------\n");
  EXPECT_EQ(report.entry_matched_points, (std::vector<int>{-1, -1, -1}));
  // The models are as they were, but for LAMBDA.
  for (rig* both : {&models, &boards.start}) {
    for (model_map& model : *both) model[LAMBDA] = 0;
  }
  EXPECT_EQ(models, boards.start);
}

}  // namespace
}  // namespace ocpan

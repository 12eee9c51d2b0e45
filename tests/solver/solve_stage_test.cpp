#include "solver/solve_stage.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "solver/try_step.h"
#include "tests/solver/synthetic_scene.h"

namespace ocpan {
namespace {

struct solved {
  run_report report;
  rig models;
  std::vector<view_group> groups;
};

solved solve(const rig& models, const std::vector<view_group>& groups, const free_parameters& free,
             const solve_settings& settings,
             const std::vector<pose_param_name>& free_pose = free_poses(),
             const std::vector<constraint_term>& terms = {}) {
  solved result;
  solve_stage(result.report, result.models, result.groups, models, groups, free, free_pose, terms,
              {}, settings);
  return result;
}

struct scene {
  explicit scene(double noise) {
    truth = testing::side_by_side(2);
    truth[1][L] = 0.95;
    truth[1][H_0] += 5;
    groups = {testing::shoot(truth, {0}, 6, 1), testing::shoot(truth, {1}, 6, 2),
              testing::shoot(truth, {0, 1}, 8, 3)};
    testing::add_noise(groups, noise, 4);
    start = testing::side_by_side(2);
    start[1][C_0] += 3;
    start[1][A_th] -= 0.01;
    testing::disturb_poses(groups, 0.01, 3);
  }
  rig truth, start;
  std::vector<view_group> groups;
};

const free_parameters free_lists = {{H_0, H_2, V_1, V_2, L},
                                    {H_0, H_2, V_1, V_2, L, A_th, A_ph, C_0, C_1, C_2}};

TEST(SolveStage, ComesBackToTheTruthFromExactPixels) {
  const scene s(0);
  solve_settings settings;
  settings.abs_tol = 1e-12;
  const solved got = solve(s.start, s.groups, free_lists, settings);
  for (std::size_t c = 0; c < 2; ++c) {
    for (parameter_name key : {C_0, C_1, C_2, H_0, H_2, V_1, V_2}) {
      EXPECT_NEAR(got.models[c].at(key), s.truth[c].at(key), 1e-4) << c << parameter_text(key);
    }
    EXPECT_NEAR(got.models[c].at(L), s.truth[c].at(L), 1e-6);
  }
  EXPECT_LT(got.report.max_error, 1e-4);
}

TEST(SolveStage, WithNoiseLeavesAboutTheNoise) {
  const scene s(0.1);
  const solved got = solve(s.start, s.groups, free_lists, {});
  // The mean length of a two-dimensional residual of 0.1 each is 0.1 sqrt(pi / 2).
  EXPECT_NEAR(got.report.average_error, 0.1 * std::sqrt(pi / 2), 0.015);
  EXPECT_NEAR(got.models[1].at(C_0), 60, 0.5);
}

// A plain loop over the same single steps.
struct plain_solver {
  plain_solver(const solver_problem& problem_, const rig& models)
      : problem(problem_), state(start_state(problem, models)), scales(problem.layout) {}
  void step(int iteration) {
    const linearisation at = linearise(problem, state, sigma, scales);
    const bool reject_now =
        problem.settings.reject && (iteration == 4 || iteration == 9 || iteration == 14);
    trial_step trial = try_step(problem, state, at, scales, damping, sigma, reject_now);
    while (!(trial.cost < at.cost)) {
      ASSERT_LE(damping, 1e10);
      damping *= 1.5;
      trial = try_step(problem, state, at, scales, damping, sigma, reject_now);
    }
    damping *= 0.1;
    state = trial.state;
    const double free = static_cast<double>(problem.layout.camera_columns());
    sigma = std::sqrt(trial.squared_error / (at.sample_count - free));
  }
  const solver_problem& problem;
  solver_state state;
  column_scales scales;
  double damping = 0.01;
  double sigma = 3.0;
};

TEST(SolveStage, TakesTheStepsOfThePlainLoopAndStopsAboveTheMostIterations) {
  const scene s(0.2);
  int solves = 0;
  for (int most : {0, 1, 3}) {
    solve_settings settings;
    settings.abs_tol = settings.rel_tol = 0;
    settings.max_iterations = most;
    settings.reject = true;
    const solver_problem problem =
        make_problem(s.groups, free_lists, free_poses(), {}, {}, settings);
    plain_solver plain(problem, s.start);
    for (int iteration = 0; iteration < most + 2; ++iteration) plain.step(iteration);
    const solved got = solve(s.start, s.groups, free_lists, settings);
    EXPECT_EQ(got.models, plain.state.models) << most;
    ++solves;
  }
  EXPECT_EQ(solves, 3);
}

TEST(SolveStage, RenewsTheNoiseWithTheCountAheadOfARejection) {
  scene s(0.2);
  s.groups[2].shots[3][1](0, 11) += 60;
  solve_settings settings;
  settings.abs_tol = settings.rel_tol = 0;
  settings.max_iterations = 5;  // two steps beyond the rejecting one
  settings.reject = true;
  const solver_problem problem = make_problem(s.groups, free_lists, free_poses(), {}, {}, settings);
  plain_solver plain(problem, s.start);
  for (int iteration = 0; iteration < 7; ++iteration) plain.step(iteration);
  EXPECT_EQ(plain.state.weights.sum(), 28 * 30 - 1);
  EXPECT_EQ(solve(s.start, s.groups, free_lists, settings).models, plain.state.models);
}

TEST(SolveStage, TakesAConvergedStep) {
  const scene s(0.2);
  solve_settings settings;
  settings.abs_tol = 1e9;  // any first step converges
  const solver_problem problem = make_problem(s.groups, free_lists, free_poses(), {}, {}, settings);
  plain_solver plain(problem, s.start);
  plain.step(0);
  const solved got = solve(s.start, s.groups, free_lists, settings);
  EXPECT_EQ(got.models, plain.state.models);
  EXPECT_NE(got.models, start_state(problem, s.start).models);
  EXPECT_EQ(plain.damping, 0.001);
}

TEST(SolveStage, ConvergesOnASmallRelativeChangeToo) {
  const scene s(0.2);
  solve_settings settings;
  settings.abs_tol = 0;
  settings.rel_tol = 1e9;
  const solver_problem problem = make_problem(s.groups, free_lists, free_poses(), {}, {}, settings);
  plain_solver plain(problem, s.start);
  plain.step(0);
  EXPECT_EQ(solve(s.start, s.groups, free_lists, settings).models, plain.state.models);
}

TEST(SolveStage, RejectsOnTheFifthIterationAndNotBefore) {
  scene s(0.1);
  s.groups[2].shots[3][1](0, 11) += 60;
  solve_settings settings;
  settings.reject = true;
  settings.abs_tol = settings.rel_tol = 0;
  int solves = 0;
  for (const auto& [most, expected] : {std::pair{2.0, 0}, std::pair{3.0, 1}}) {
    settings.max_iterations = most;  // 4 and 5 accepted steps
    const solved got = solve(s.start, s.groups, free_lists, settings);
    EXPECT_EQ(got.report.matched_points, 28 * 30 - expected);
    ++solves;
  }
  EXPECT_EQ(solves, 2);
}

TEST(SolveStage, RejectsAgainOnEveryFifthIteration) {
  // The noise is estimated with the largest outlier in it, about a fortieth of that one. Five
  // times the noise hides the next until the largest has gone.
  scene s(0.1);
  s.groups[2].shots[3][1](0, 11) += 3000;
  s.groups[1].shots[2][0](1, 7) += 250;
  s.groups[0].shots[4][0](0, 20) += 15;
  solve_settings settings;
  settings.reject = true;
  settings.abs_tol = settings.rel_tol = 0;
  int solves = 0;
  for (const auto& [steps, gone] :
       {std::pair{4, 0}, std::pair{5, 1}, std::pair{9, 1}, std::pair{10, 2}, std::pair{14, 2},
        std::pair{15, 3}, std::pair{24, 3}}) {
    settings.max_iterations = steps - 2;
    EXPECT_EQ(solve(s.start, s.groups, free_lists, settings).report.matched_points, 28 * 30 - gone)
        << steps;
    ++solves;
  }
  EXPECT_EQ(solves, 7);
}

TEST(SolveStage, NeverRejectsUnlessAsked) {
  scene s(0.1);
  s.groups[2].shots[3][1](0, 11) += 60;
  EXPECT_EQ(solve(s.start, s.groups, free_lists, {}).report.matched_points, 28 * 30);
}

TEST(SolveStage, WithOutliersRejectedFindsTheTruth) {
  scene s(0.05);
  for (std::size_t shot = 0; shot < 8; ++shot) s.groups[2].shots[shot][1](0, 5) += 200;
  solve_settings settings;
  settings.reject = true;
  settings.abs_tol = 0;
  settings.max_iterations = 30;
  const solved got = solve(s.start, s.groups, free_lists, settings);
  EXPECT_EQ(got.report.matched_points, 28 * 30 - 8);
  EXPECT_NEAR(got.models[1].at(C_0), 60, 0.5);
  // Shots that lost a point are no full boards and carry no flag.
  EXPECT_EQ(got.report.full_boards, 12);
  EXPECT_EQ(got.report.entry_full_boards, (std::vector<int>{6, 6, 0}));
  EXPECT_EQ(got.report.entry_flags[2], std::vector<bool>(8, false));
  EXPECT_EQ(got.report.entry_flags[0], std::vector<bool>(6, true));
}

TEST(SolveStage, LeavesWhatIsntFreeAsItWas) {
  const scene s(0.2);
  const solved got = solve(s.start, s.groups, free_lists, {});
  for (parameter_name key : {C_0, C_1, C_2, A_th, A_ph, H_1, V_0, rho_0, rho_1, rho_2, O_th}) {
    EXPECT_EQ(got.models[0].at(key), s.start[0].at(key)) << parameter_text(key);
  }
  EXPECT_EQ(got.models[1].at(H_1), s.start[1].at(H_1));
}

TEST(SolveStage, WithNoFreeCameraParameterMovesPosesOnly) {
  const scene s(0);
  const solved got = solve(s.truth, s.groups, free_parameters(2), {});
  EXPECT_LT(got.report.average_error, 0.01);
  EXPECT_EQ(got.models[1].at(H_0), s.truth[1].at(H_0));
  EXPECT_NE(got.groups[0].poses[0].translation, s.groups[0].poses[0].translation);
}

TEST(SolveStage, WithoutAShotGivesTheModelsBackAndZeros) {
  const rig models = testing::side_by_side(2);
  view_group empty;
  empty.cameras = {0};
  empty.board_points = testing::board(3, 3, 1);
  for (const auto& groups : {std::vector<view_group>{}, std::vector<view_group>{empty}}) {
    const solved got =
        solve(models, groups, free_lists, {}, free_poses(), {make_prior_term(H_0, 0, 1, 1)});
    rig expected = models;
    for (model_map& model : expected) model[LAMBDA] = 1.0;
    EXPECT_EQ(got.models, expected);
    EXPECT_EQ(got.report.min_distance, 0);
    EXPECT_EQ(got.report.max_distance, 0);
    EXPECT_EQ(got.report.matched_points, 0);
    EXPECT_EQ(got.report.average_error, 0);
    EXPECT_EQ(got.report.entry_distances.size(), groups.size());
  }
}

TEST(SolveStage, EndsOnNotANumberWhereItBegan) {
  scene s(0.1);
  s.groups[0].shots[0][0](0, 0) = std::numeric_limits<double>::quiet_NaN();
  const solved got = solve(s.start, s.groups, free_lists, {});
  rig expected = s.start;
  for (model_map& model : expected) model[LAMBDA] = lambda_from_law(model[L]);
  EXPECT_EQ(got.models, expected);
}

TEST(SolveStage, EndsWithFewerSamplesThanUnknowns) {
  // n - P is not above 0: sigma is no number after the first step, and that ends it.
  const rig truth = testing::side_by_side(1);
  std::vector<view_group> groups = {testing::shoot(truth, {0}, 1, 1)};
  groups[0].board_points.conservativeResize(3, 2);
  groups[0].shots[0][0].conservativeResize(2, 2);
  testing::disturb_poses(groups, 0.01, 3);
  rig start = truth;
  start[0][H_0] += 2;
  const solved got = solve(start, groups, {{H_0, H_2, V_0, V_1, V_2}}, {});
  EXPECT_TRUE(std::isfinite(got.models[0].at(H_0)));
}

TEST(SolveStage, EndsOnPixelsThatFitPerfectly) {
  const scene s(0);
  std::vector<view_group> exact = {testing::shoot(s.truth, {0, 1}, 3, 9)};
  const solved got = solve(s.truth, exact, free_lists, {});
  EXPECT_LT(got.report.max_error, 1e-9);
}

TEST(SolveStage, EndsWhereAPointStaysBeyondTheClamp) {
  // Outer corners lie beyond the turning point of the distortion: their pixels are the
  // clamped ones, the solver's derivatives are those of the unclamped, and every trial
  // falls by the same amount.
  rig models = testing::side_by_side(1);
  models[0][rho_1] = -0.3;
  view_group group;
  group.cameras = {0};
  group.board_points = testing::board(9, 7, 80);
  group.poses = {{{pi, 0, 0}, {-180, 150, -400}}};
  group.shots = {{testing::seen(group.board_points, models[0], group.poses[0])}};
  group.poses[0].translation.x() += 5;
  const solved got = solve(models, {group}, free_parameters(1), {}, {T_0, T_1, T_2});
  EXPECT_GT(got.report.max_error, 1);
  EXPECT_TRUE(std::isfinite(got.report.max_error));
}

TEST(SolveStage, MayWriteToItsInputs) {
  const scene s(0.1);
  const solved apart = solve(s.start, s.groups, free_lists, {});
  rig models = s.start;
  std::vector<view_group> groups = s.groups;
  run_report report;
  solve_stage(report, models, groups, models, groups, free_lists, free_poses(), {}, {}, {});
  EXPECT_EQ(models, apart.models);
  EXPECT_EQ(groups[1].poses[2].rotation, apart.groups[1].poses[2].rotation);
}

TEST(SolveStage, ReportsErrorsAndDistancesAtTheResult) {
  const rig models = testing::side_by_side(2);
  std::vector<view_group> groups = {testing::shoot(models, {0}, 2, 1),
                                    testing::shoot(models, {0, 1}, 1, 2)};
  groups[0].shots[0][0].col(3) += Eigen::Vector2d(0.3, 0.4);             // 0.5
  groups[1].shots[0][1].col(8) += Eigen::Vector2d(-0.6, 0.8);            // 1.0
  const solved got = solve(models, groups, free_parameters(2), {}, {});  // nothing may move
  EXPECT_NEAR(got.report.average_error, 1.5 / 120, 1e-12);
  EXPECT_NEAR(got.report.max_error, 1.0, 1e-12);
  EXPECT_EQ(got.report.matched_points, 120);
  EXPECT_EQ(got.report.full_boards, 3);
  EXPECT_NEAR(got.report.entry_average_error[0], 0.5 / 60, 1e-12);
  EXPECT_NEAR(got.report.entry_average_error[1], 1.0 / 60, 1e-12);
  EXPECT_NEAR(got.report.entry_max_error[0], 0.5, 1e-12);
  const double d0 = groups[0].poses[0].translation.norm();
  const double d1 = groups[0].poses[1].translation.norm();
  const double d2 = groups[1].poses[0].translation.norm();
  EXPECT_EQ(got.report.entry_distances, (std::vector<std::vector<double>>{{d0, d1}, {d2}}));
  EXPECT_EQ(got.report.entry_min_distance[0], std::min(d0, d1));
  EXPECT_EQ(got.report.entry_max_distance[0], std::max(d0, d1));
  EXPECT_EQ(got.report.min_distance, std::min({d0, d1, d2}));
  EXPECT_EQ(got.report.max_distance, std::max({d0, d1, d2}));
  EXPECT_EQ(got.report.entry_matched_points, (std::vector<int>{60, 60}));
}

}  // namespace
}  // namespace ocpan

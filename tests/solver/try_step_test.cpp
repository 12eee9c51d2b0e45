#include "solver/try_step.h"

#include <cmath>
#include <limits>

#include <Eigen/Cholesky>
#include <gtest/gtest.h>

#include "tests/solver/synthetic_scene.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

struct small_problem {
  explicit small_problem(double noise = 0.3) {
    truth = testing::side_by_side(3);
    groups = {testing::shoot(truth, {0, 1}, 3, 1), testing::shoot(truth, {1, 2}, 3, 2),
              testing::shoot(truth, {2}, 2, 3)};
    testing::add_noise(groups, noise, 4);
    testing::disturb_poses(groups, 0.01, 2);
    models = truth;
    models[1][H_0] += 4;
    models[2][V_2] -= 3;
  }
  solver_problem problem(const free_parameters& free) const {
    return make_problem(groups, free, free_poses(), terms, {}, settings);
  }
  rig truth, models;
  std::vector<view_group> groups;
  std::vector<constraint_term> terms = {make_pair_term(H_0, 0, H_0, 1, 2.0)};
  solve_settings settings;
};

// The whole damped system at once.
VectorXd joint_step(const solver_problem& problem, const linearisation& at, double damping) {
  const Index nc = problem.layout.camera_columns(), np = problem.layout.pose_columns();
  const Index all = nc + np * static_cast<Index>(at.shots.size());
  MatrixXd m = MatrixXd::Zero(all, all);
  VectorXd g(all);
  m.topLeftCorner(nc, nc) = at.a;
  g.head(nc) = at.g;
  for (std::size_t i = 0; i < at.shots.size(); ++i) {
    const Index p = nc + np * static_cast<Index>(i);
    m.block(p, p, np, np) = at.shots[i].c;
    g.segment(p, np) = at.shots[i].g;
    const touched_cameras& touched = problem.touched[problem.shots[i].group];
    for (std::size_t t = 0; t < touched.cameras.size(); ++t) {
      const Index n = problem.layout.columns_of(touched.cameras[t]);
      const Index c = problem.layout.first[touched.cameras[t]];
      m.block(c, p, n, np) = at.shots[i].b.middleRows(touched.local_first[t], n);
      m.block(p, c, np, n) = m.block(c, p, n, np).transpose();
    }
  }
  m.diagonal().array() += damping;
  return m.ldlt().solve(g);
}

double part_of(const ModelPose& pose, pose_param_name key) {
  return key < T_0 ? pose.rotation[key - R_0] : pose.translation[key - T_0];
}

// Compares a trial's moves with the joint step; gives how many there are.
int expect_joint_step(const solver_problem& problem, const rig& models) {
  const solver_state state = start_state(problem, models);
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, state, 3.0, scales);
  const trial_step trial = try_step(problem, state, at, scales, 0.01, 3.0, false);
  const VectorXd step = joint_step(problem, at, 0.01);
  const column_layout& layout = problem.layout;
  Index next = 0;
  for (; next < layout.camera_columns(); ++next) {
    const auto [camera, key] = layout.columns[static_cast<std::size_t>(next)];
    const double moved = trial.state.models[camera].at(key) - state.models[camera].at(key);
    const double expected = step[next] / scales.camera[next];
    EXPECT_NEAR(moved, expected, 1e-8 * std::max(1.0, std::abs(expected)));
  }
  for (std::size_t i = 0; i < problem.shots.size(); ++i) {
    for (Index k = 0; k < layout.pose_columns(); ++k) {
      const pose_param_name key = layout.pose[static_cast<std::size_t>(k)];
      const double moved = part_of(trial.state.poses[i], key) - part_of(state.poses[i], key);
      EXPECT_NEAR(moved, step[next++] / scales.pose[k], key < T_0 ? 1e-9 : 1e-6);
    }
  }
  return static_cast<int>(next);
}

TEST(TryStep, SolvesTheJointDampedSystem) {
  const small_problem made;
  const solver_problem problem = made.problem(free_parameters(3, {H_0, V_2, C_1, L}));
  EXPECT_EQ(expect_joint_step(problem, made.models), 12 + 8 * 6);
}

TEST(TryStep, SolvesItForAnyNumberOfFreePoseNumbers) {
  const small_problem made;
  for (std::size_t count = 0; count <= 6; ++count) {
    auto poses = free_poses();
    poses.resize(count);
    const solver_problem problem = make_problem(made.groups, free_parameters(3, {H_0, V_2, C_1}),
                                                poses, made.terms, {}, made.settings);
    EXPECT_EQ(expect_joint_step(problem, made.models), 9 + 8 * static_cast<int>(count));
  }
}

TEST(TryStep, SolvesItWithCamerasThatHaveNothingFree) {
  const small_problem made;
  for (const std::size_t held : {0, 1, 2}) {
    free_parameters free(3, {H_0, V_2});
    free[held].clear();
    EXPECT_EQ(expect_joint_step(made.problem(free), made.models), 4 + 8 * 6) << held;
  }
}

TEST(TryStep, RenewsTheLawFromItsVariable) {
  const small_problem made;
  const solver_problem problem = made.problem(free_parameters(3, {L}));
  const solver_state state = start_state(problem, made.models);
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, state, 3.0, scales);
  const trial_step trial = try_step(problem, state, at, scales, 0.01, 3.0, false);
  for (const model_map& model : trial.state.models) {
    EXPECT_NE(model.at(L), 1.0);
    EXPECT_EQ(model.at(L), law_from_lambda(model.at(LAMBDA)));
  }
}

TEST(TryStep, MovesOnlyTheFreePartsOfAPose) {
  const small_problem made;
  const solve_settings settings;
  const solver_problem problem =
      make_problem(made.groups, free_parameters(3), {T_2, R_1}, {}, {}, settings);
  const solver_state state = start_state(problem, made.models);
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, state, 3.0, scales);
  const trial_step trial = try_step(problem, state, at, scales, 0.01, 3.0, false);
  EXPECT_EQ(trial.state.models, state.models);
  for (std::size_t i = 0; i < state.poses.size(); ++i) {
    const Eigen::Vector3d turned = trial.state.poses[i].rotation - state.poses[i].rotation;
    const Eigen::Vector3d shifted = trial.state.poses[i].translation - state.poses[i].translation;
    EXPECT_EQ(turned.x(), 0);
    EXPECT_NE(turned.y(), 0);
    EXPECT_EQ(shifted.x(), 0);
    EXPECT_NE(shifted.z(), 0);
  }
}

TEST(TryStep, CountsImageResidualsOnly) {
  small_problem made;
  const solver_problem without = made.problem(free_parameters(3));
  made.terms = {make_prior_term(H_0, 0, 1e6, 1e-3)};
  const solver_problem with = made.problem(free_parameters(3));
  const solver_state state = start_state(without, made.models);
  column_scales scales(without.layout);
  const linearisation at = linearise(without, state, 3.0, scales);
  const trial_step plain = try_step(without, state, at, scales, 0.01, 3.0, false);
  const trial_step held = try_step(with, state, at, scales, 0.01, 3.0, false);
  EXPECT_EQ(plain.cost, held.cost);
  EXPECT_DOUBLE_EQ(plain.cost, plain.squared_error / 9);
}

TEST(TryStep, RejectsPointsBeyondTheLimitAndCountsThemOnceMore) {
  small_problem made(0.0);
  made.groups[0].shots[1][0](0, 4) += 400;  // far off
  const solver_problem problem = made.problem(free_parameters(3));
  solver_state state = start_state(problem, made.models);
  state.weights[7] = 0;  // gone before
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, state, 3.0, scales);
  const double heavy = 1e6;  // hardly a step
  const trial_step kept = try_step(problem, state, at, scales, heavy, 3.0, false);
  const trial_step rejected = try_step(problem, state, at, scales, heavy, 3.0, true);
  EXPECT_EQ(kept.squared_error, rejected.squared_error);
  EXPECT_EQ(kept.state.weights.sum(), state.weights.sum());
  const Index outlier = problem.shots[1].first_weight + 4;
  EXPECT_EQ(rejected.state.weights[outlier], 0);
  EXPECT_EQ(rejected.state.weights[7], 0);

  // Every other decision is that of 24 > e^2 / max(1, sigma)^2.
  int checks = 0;
  for (std::size_t i = 0; i < problem.shots.size(); ++i) {
    const view_group& group = problem.groups[problem.shots[i].group];
    for (std::size_t e = 0; e < group.cameras.size(); ++e) {
      const auto projected = testing::seen(
          group.board_points, rejected.state.models[group.cameras[e]], rejected.state.poses[i]);
      for (Index k = 0; k < 30; ++k) {
        const Index w = problem.shots[i].first_weight + static_cast<Index>(e) * 30 + k;
        if (w == 7) continue;
        const double square =
            (group.shots[problem.shots[i].shot][e] - projected).col(k).squaredNorm();
        EXPECT_EQ(rejected.state.weights[w], square / 9 < 24 ? 1 : 0);
        ++checks;
      }
    }
  }
  EXPECT_EQ(checks, 30 * 14 - 1);
}

TEST(TryStep, HasAFloorOfOnePixelInTheRejectionOnly) {
  small_problem made(0.0);
  made.models = made.truth;
  made.groups = {testing::shoot(made.truth, {0}, 1, 1)};
  made.groups[0].shots[0][0](0, 4) += 4.5;  // 20.25 below 24
  made.groups[0].shots[0][0](1, 9) += 5.0;  // 25 above
  const solver_problem problem = made.problem(free_parameters(3));
  const solver_state state = start_state(problem, made.models);
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, state, 0.01, scales);
  const trial_step trial = try_step(problem, state, at, scales, 1e9, 0.01, true);
  EXPECT_EQ(trial.state.weights[4], 1);
  EXPECT_EQ(trial.state.weights[9], 0);
  EXPECT_NEAR(trial.cost, trial.squared_error / 1e-4, 1e-6);
}

TEST(FirstFallingStep, RaisesTheDampingByHalfForEachRefusal) {
  // From the truth nothing falls: every trial is refused until the damping passes 1e10.
  const small_problem made(0.0);
  std::vector<view_group> exact = {testing::shoot(made.truth, {0, 1}, 2, 1)};
  const solver_problem problem =
      make_problem(exact, free_parameters(3, {H_0}), free_poses(), {}, {}, made.settings);
  const solver_state state = start_state(problem, made.truth);
  column_scales scales(problem.layout);
  linearisation at = linearise(problem, state, 3.0, scales);
  at.cost = 0;
  double damping = 0.01;
  EXPECT_FALSE(first_falling_step(problem, state, at, scales, damping, 3.0, false));
  double expected = 0.01;
  while (!(expected > 1e10)) expected *= 1.5;
  EXPECT_EQ(damping, expected);
}

TEST(FirstFallingStep, KeepsTheDampingOfAStepThatFalls) {
  const small_problem made;
  const solver_problem problem = made.problem(free_for_lenses(3));
  const solver_state state = start_state(problem, made.models);
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, state, 3.0, scales);
  double damping = 0.01;
  const auto step = first_falling_step(problem, state, at, scales, damping, 3.0, false);
  ASSERT_TRUE(step);
  EXPECT_EQ(damping, 0.01);
  EXPECT_LT(step->cost, at.cost);
}

TEST(FirstFallingStep, TakesNoStepFromACostThatIsNotANumber) {
  small_problem made;
  made.groups[0].shots[0][0](0, 0) = std::numeric_limits<double>::quiet_NaN();
  const solver_problem problem = made.problem(free_for_lenses(3));
  const solver_state state = start_state(problem, made.models);
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, state, 3.0, scales);
  EXPECT_TRUE(std::isnan(at.cost));
  double damping = 0.01;
  EXPECT_FALSE(first_falling_step(problem, state, at, scales, damping, 3.0, false));
}

}  // namespace
}  // namespace ocpan

#include "solver/linearisation.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/solver/synthetic_scene.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

// Three cameras, a group of two and a group in which camera 1 stands twice, with terms.
struct small_problem {
  small_problem() {
    models = testing::side_by_side(3);
    groups = {testing::shoot(models, {0, 2}, 2, 1), testing::shoot(models, {1, 0, 1}, 1, 2)};
    testing::add_noise(groups, 1.0, 3);
    camera_terms = {make_axis_term(1, 0.01), make_pair_term(LAMBDA, 0, LAMBDA, 2, 0.001),
                    make_prior_term(H_0, 1, 500, 3.0)};
    pose_terms = {make_radius_term(450, 300)};
    free = {{H_0, L, V_1}, {C_0, O_th, L}, {A_th, L}};
  }
  solver_problem problem() const {
    return make_problem(groups, free, {R_1, T_0, T_2}, camera_terms, pose_terms, settings);
  }
  rig models;
  std::vector<view_group> groups;
  std::vector<constraint_term> camera_terms;
  std::vector<pose_term> pose_terms;
  free_parameters free;
  solve_settings settings;
};

// The whole Jacobian and residual written out: columns of all cameras, then of all poses.
struct dense_system {
  MatrixXd j;
  VectorXd r;
  double image_cost = 0;
};

dense_system write_out(const solver_problem& problem, const solver_state& state, double sigma) {
  const Index nc = problem.layout.camera_columns(), np = problem.layout.pose_columns();
  const Index columns = nc + np * static_cast<Index>(problem.shots.size());
  dense_system dense;
  dense.j.resize(0, columns);
  dense.r.resize(0);
  const auto append = [&](const VectorXd& row, double residual) {
    dense.j.conservativeResize(dense.j.rows() + 1, columns);
    dense.j.bottomRows<1>() = row.transpose();
    dense.r.conservativeResize(dense.r.size() + 1);
    dense.r[dense.r.size() - 1] = residual;
  };
  const double divisor = problem.settings.terms_in_sigma ? sigma : 1;
  for (std::size_t i = 0; i < problem.shots.size(); ++i) {
    const view_group& group = problem.groups[problem.shots[i].group];
    const Index n = group.board_points.cols();
    const Index pose_at = nc + np * static_cast<Index>(i);
    for (std::size_t e = 0; e < group.cameras.size(); ++e) {
      const std::size_t camera = group.cameras[e];
      Eigen::ArrayXd x, y;
      derivative_map dx, dy;
      project_points(x, y, dx, dy, group.board_points, state.models[camera],
                     state.poses[i].rotation, state.poses[i].translation, true);
      for (Index k = 0; k < n; ++k) {
        const double w =
            state.weights[problem.shots[i].first_weight + static_cast<Index>(e) * n + k] / sigma;
        for (int axis = 0; axis < 2; ++axis) {
          const derivative_map& d = axis == 0 ? dx : dy;
          VectorXd row = VectorXd::Zero(columns);
          for (Index c = 0; c < nc; ++c) {
            const camera_column& column = problem.layout.columns[static_cast<std::size_t>(c)];
            if (column.camera == camera) row[c] = w * d[column.key][k];
          }
          for (Index p = 0; p < np; ++p) {
            row[pose_at + p] = w * d[problem.layout.pose[static_cast<std::size_t>(p)]][k];
          }
          const double projected = axis == 0 ? x[k] : y[k];
          append(row, w * (group.shots[problem.shots[i].shot][e](axis, k) - projected));
        }
      }
    }
  }
  dense.image_cost = dense.r.squaredNorm();
  for (const constraint_term& term : problem.camera_terms) {
    VectorXd row = VectorXd::Zero(columns);
    for (Index c = 0; c < nc; ++c) {
      const camera_column& column = problem.layout.columns[static_cast<std::size_t>(c)];
      row[c] = term.derivative(state.models, column.camera, column.key) / divisor;
    }
    append(row, term.value(state.models) / divisor);
  }
  for (const pose_term& term : problem.pose_terms) {
    for (std::size_t i = 0; i < problem.shots.size(); ++i) {
      VectorXd row = VectorXd::Zero(columns);
      for (Index p = 0; p < np; ++p) {
        row[nc + np * static_cast<Index>(i) + p] =
            term.derivative(state.poses[i], problem.layout.pose[static_cast<std::size_t>(p)]) /
            divisor;
      }
      append(row, term.value(state.poses[i]) / divisor);
    }
  }
  return dense;
}

void expect_near(const MatrixXd& got, const MatrixXd& expected, const char* what) {
  ASSERT_EQ(got.rows(), expected.rows()) << what;
  ASSERT_EQ(got.cols(), expected.cols()) << what;
  const double largest = std::max(1e-300, expected.cwiseAbs().maxCoeff());
  EXPECT_LT((got - expected).cwiseAbs().maxCoeff(), 1e-11 * largest) << what;
}

void expect_blocks_of(const small_problem& made, double sigma, solver_state state) {
  const solver_problem problem = made.problem();
  state.weights[5] = 0;
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, state, sigma, scales);
  const dense_system dense = write_out(problem, state, sigma);
  const Index nc = problem.layout.camera_columns(), np = problem.layout.pose_columns();

  // Scales: the norm per camera column; one per pose column over all shots.
  VectorXd divide(dense.j.cols());
  divide.head(nc) = dense.j.leftCols(nc).colwise().norm().transpose().cwiseMax(1e-8);
  for (Index p = 0; p < np; ++p) {
    double square = 0;
    for (std::size_t i = 0; i < problem.shots.size(); ++i) {
      square += dense.j.col(nc + np * static_cast<Index>(i) + p).squaredNorm();
    }
    for (std::size_t i = 0; i < problem.shots.size(); ++i) {
      divide[nc + np * static_cast<Index>(i) + p] = std::sqrt(square);
    }
    EXPECT_NEAR(scales.pose[p], std::sqrt(square), 1e-12 * std::sqrt(square));
  }
  expect_near(scales.camera, divide.head(nc), "camera scales");

  const MatrixXd j = dense.j * divide.cwiseInverse().asDiagonal();
  const MatrixXd jj = j.transpose() * j;
  const VectorXd jr = j.transpose() * dense.r;
  expect_near(at.a, jj.topLeftCorner(nc, nc), "A");
  expect_near(at.g, jr.head(nc), "g");
  EXPECT_NEAR(at.cost, dense.image_cost, 1e-10 * dense.image_cost);
  for (std::size_t i = 0; i < problem.shots.size(); ++i) {
    const Index pose_at = nc + np * static_cast<Index>(i);
    expect_near(at.shots[i].c, jj.block(pose_at, pose_at, np, np), "C");
    expect_near(at.shots[i].g, jr.segment(pose_at, np), "pose g");
    MatrixXd b = MatrixXd::Zero(nc, np);
    const touched_cameras& touched = problem.touched[problem.shots[i].group];
    for (std::size_t t = 0; t < touched.cameras.size(); ++t) {
      const Index n = problem.layout.columns_of(touched.cameras[t]);
      b.middleRows(problem.layout.first[touched.cameras[t]], n) =
          at.shots[i].b.middleRows(touched.local_first[t], n);
    }
    expect_near(b, jj.block(0, pose_at, nc, np), "B");
  }
}

TEST(Linearise, GivesTheBlocksOfTheWrittenOutSystem) {
  const small_problem made;
  expect_blocks_of(made, 3.0, start_state(made.problem(), made.models));
}

TEST(Linearise, DividesTermsBySigmaOnlyWhenAsked) {
  small_problem made;
  made.settings.terms_in_sigma = true;
  expect_blocks_of(made, 0.7, start_state(made.problem(), made.models));
}

TEST(Linearise, CountsEachSampleTwiceByItsWeight) {
  const small_problem made;
  const solver_problem problem = made.problem();
  solver_state state = start_state(problem, made.models);
  EXPECT_EQ(state.weights.size(), 30 * (2 * 2 + 3));
  state.weights[0] = state.weights[17] = 0;
  column_scales scales(problem.layout);
  EXPECT_EQ(linearise(problem, state, 1, scales).sample_count, 2 * (30 * 7 - 2));
}

TEST(Linearise, NeverShrinksAScale) {
  const small_problem made;
  const solver_problem problem = made.problem();
  const solver_state state = start_state(problem, made.models);
  column_scales scales(problem.layout);
  linearise(problem, state, 1.0, scales);
  const VectorXd larger = scales.camera;
  linearise(problem, state, 10.0, scales);  // image rows a tenth
  EXPECT_EQ(scales.camera, larger);
  EXPECT_GT(larger[0], 1);
}

TEST(Linearise, HoldsAnEmptyColumnAtTheSmallestScale) {
  small_problem made;
  made.free[0] = {A_ph};  // at the pole nothing moves: sin(pi) is 1.2e-16
  const solver_problem problem = made.problem();
  column_scales scales(problem.layout);
  linearise(problem, start_state(problem, made.models), 3.0, scales);
  EXPECT_EQ(scales.camera[0], 1e-8);
}

TEST(Linearise, KeepsAShotsBlockToTheCamerasItTouches) {
  const rig models = testing::side_by_side(8);
  const std::vector<view_group> groups = {testing::shoot(models, {6, 3}, 1, 1)};
  const solve_settings settings;
  const solver_problem problem =
      make_problem(groups, free_for_all(8), free_poses(), {}, {}, settings);
  column_scales scales(problem.layout);
  const linearisation at = linearise(problem, start_state(problem, models), 3.0, scales);
  EXPECT_EQ(at.shots[0].b.rows(), 2 * 17);
  EXPECT_EQ(at.a.rows(), 11 + 7 * 17);
}

TEST(NumberColumns, RunsThroughAllCamerasInListOrderWithLambdaForL) {
  const column_layout layout = number_columns({{H_2, L}, {}, {C_0, LAMBDA, A_th}}, {T_0, R_2});
  ASSERT_EQ(layout.columns.size(), 5u);
  EXPECT_EQ(layout.columns[0].key, H_2);
  EXPECT_EQ(layout.columns[1].key, LAMBDA);
  EXPECT_EQ(layout.columns[2].camera, 2u);
  EXPECT_EQ(layout.columns[3].key, LAMBDA);
  EXPECT_EQ(layout.columns[4].key, A_th);
  EXPECT_EQ(layout.first, (std::vector<Index>{0, 2, 2, 5}));
  EXPECT_EQ(layout.pose_columns(), 2);
}

TEST(StartState, HoldsAllEighteenParametersWithLambdaOfTheLaw) {
  const small_problem made;
  rig models = made.models;
  models[0] = {{H_0, 450}, {L, -0.5}};
  const solver_state state = start_state(made.problem(), models);
  EXPECT_EQ(state.models[0].size(), 18u);
  EXPECT_EQ(state.models[0].at(LAMBDA), -0.125);
  EXPECT_EQ(state.models[0].at(V_1), 0);
  EXPECT_EQ(state.poses.size(), 3u);
  EXPECT_TRUE((state.weights == 1).all());
}

}  // namespace
}  // namespace ocpan

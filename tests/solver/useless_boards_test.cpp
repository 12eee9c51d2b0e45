#include <cmath>

#include <gtest/gtest.h>

#include "solver/solve_stage.h"
#include "tests/solver/synthetic_scene.h"

namespace ocpan {
namespace {

constexpr int lattice = 6;  // points along a side

// Shots of a board at given poses by two cameras.
view_group shots_at(const rig& models, const Eigen::Matrix3Xd& points,
                    const std::vector<ModelPose>& poses) {
  view_group group;
  group.cameras = {0, 1};
  group.board_points = points;
  group.poses = poses;
  for (const ModelPose& pose : poses) {
    group.shots.push_back(
        {testing::seen(points, models[0], pose), testing::seen(points, models[1], pose)});
  }
  return group;
}

// Solves for all that may move, from a start that is a little off. Gives the rig.
rig solved_from(const rig& truth, view_group group) {
  rig start = truth;
  start[1][C_0] += 2;
  start[0][H_0] *= 1.01;
  std::vector<view_group> groups = {std::move(group)};
  run_report report;
  solve_settings settings;
  settings.max_iterations = 50;
  settings.reject = true;
  rig models;
  solve_stage(report, models, groups, start, groups, free_for_all(2), free_poses(), {}, {},
              settings);
  return models;
}

ModelPose facing(double x, double depth) { return {{pi - 0.2, 0.1, 0.05}, {x, 40, -depth}}; }

// Each ends, and gives all that a rig holds, whatever it is worth.
void expect_whole(const rig& models) {
  ASSERT_EQ(models.size(), 2u);
  for (const model_map& model : models) EXPECT_EQ(model.size(), std::size_t{parameter_count});
}

TEST(UselessBoards, OnALineEnd) {
  Eigen::Matrix3Xd line(3, lattice);
  for (int k = 0; k < lattice; ++k) line.col(k) << 30 * k, 0, 0;
  const rig truth = testing::side_by_side(2);
  expect_whole(solved_from(truth, shots_at(truth, line, {facing(-60, 400), facing(20, 500)})));
}

TEST(UselessBoards, SeenEdgeOnEnd) {
  const rig truth = testing::side_by_side(2);
  const ModelPose edge_on = {{pi / 2, 0, 0}, {-60, 0, -400}};
  const ModelPose other = {{pi / 2, 0, 0.1}, {-20, 0, -500}};
  expect_whole(
      solved_from(truth, shots_at(truth, testing::board(lattice, lattice, 30), {edge_on, other})));
}

TEST(UselessBoards, AllAtOnePoseEnd) {
  const rig truth = testing::side_by_side(2);
  const std::vector<ModelPose> poses(8, facing(-60, 400));
  expect_whole(solved_from(truth, shots_at(truth, testing::board(lattice, lattice, 30), poses)));
}

TEST(UselessBoards, WithACornerOnTheDistortionAxisEnd) {
  rig truth = testing::side_by_side(2);
  truth[0][O_th] = 0;  // exactly (0, 0, 1), where board point (0, 0) lies
  const ModelPose on_axis = {{0, 0, 0}, {0, 0, 400}};
  const view_group group =
      shots_at(truth, testing::board(lattice, lattice, 30), {on_axis, facing(-60, 500)});
  EXPECT_TRUE(std::isnan(group.shots[0][0](0, 0)));
  expect_whole(solved_from(truth, group));
}

TEST(UselessBoards, OfOnePointEnd) {
  const rig truth = testing::side_by_side(2);
  expect_whole(solved_from(truth, shots_at(truth, testing::board(1, 1, 30), {facing(10, 400)})));
}

TEST(UselessBoards, BehindTheCamerasEnd) {
  const rig truth = testing::side_by_side(2);
  const ModelPose behind = {{0.1, 0.2, 0}, {-60, -60, 400}};
  expect_whole(solved_from(truth, shots_at(truth, testing::board(lattice, lattice, 30), {behind})));
}

TEST(UselessBoards, BeforeCamerasAtTheSamePlaceEnd) {
  rig truth = testing::side_by_side(2);
  truth[1] = truth[0];
  expect_whole(solved_from(truth, shots_at(truth, testing::board(lattice, lattice, 30),
                                           {facing(-60, 400), facing(0, 500)})));
}

}  // namespace
}  // namespace ocpan

#include "calibration/board_groups.h"

#include <limits>

#include <gtest/gtest.h>

#include "model/pose.h"
#include "tests/solver/synthetic_scene.h"
#include "tests/support/captured_output.h"

namespace ocpan {
namespace {

using testing::printed_by;

cal_frame_set set_of(std::vector<std::uint64_t> cameras, const std::string& name = "wall") {
  cal_frame_set set;
  set.camera_indices = std::move(cameras);
  set.board_width = 6;
  set.board_height = 5;
  set.board_scale = 30;
  set.name = name;
  return set;
}

// Boards before cameras side by side; a camera that doesn't see has found false.
struct shooting {
  rig models = testing::side_by_side(3);
  ModelPose pose(int j) const {
    return {{pi - 0.2 + 0.1 * j, 0.1 * j, -0.05 * j}, {-75.0 + 10 * j, 60, -400.0 - 20 * j}};
  }
  board_view seen(std::size_t camera, int j) const {
    return {true, testing::seen(board_points(6, 5, 30), models[camera], pose(j))};
  }
  board_view garbage() const {
    return {true, Eigen::Matrix2Xd::Constant(2, 30, std::numeric_limits<double>::quiet_NaN())};
  }
};

const board_view missed{};

TEST(BoardPoints, RunAlongRowsInUnitsOfTheSquare) {
  const Eigen::Matrix3Xd points = board_points(4, 3, 2.5);
  ASSERT_EQ(points.cols(), 12);
  EXPECT_EQ(points.col(0), Eigen::Vector3d(0, 0, 0));
  EXPECT_EQ(points.col(3), Eigen::Vector3d(7.5, 0, 0));
  EXPECT_EQ(points.col(4), Eigen::Vector3d(0, 2.5, 0));
  EXPECT_EQ(points.col(11), Eigen::Vector3d(7.5, 5, 0));
}

TEST(SingleCameraGroups, StandInAscendingOrderOfCamerasWithinEachSet) {
  const shooting s;
  const std::vector<cal_frame_set> sets = {set_of({2, 0}), set_of({1})};
  const board_frames frames = {{{s.seen(2, 0), s.seen(0, 0)}, {missed, s.seen(0, 1)}},
                               {{s.seen(1, 2)}}};
  const auto groups = single_camera_groups(sets, frames, s.models);
  ASSERT_EQ(groups.size(), 3u);
  EXPECT_EQ(groups[0].cameras, std::vector<std::size_t>{0});
  EXPECT_EQ(groups[0].shots.size(), 2u);
  EXPECT_EQ(groups[1].cameras, std::vector<std::size_t>{2});
  EXPECT_EQ(groups[1].shots.size(), 1u);
  EXPECT_EQ(groups[2].cameras, std::vector<std::size_t>{1});
  EXPECT_LT((groups[2].poses[0].translation - s.pose(2).translation).norm(), 1e-2);
  EXPECT_EQ(groups[2].board_points, board_points(6, 5, 30));
}

TEST(SingleCameraGroups, LeaveOutACameraWithoutABoard) {
  const shooting s;
  EXPECT_TRUE(single_camera_groups({set_of({0})}, {{{missed}, {}}}, s.models).empty());
  EXPECT_TRUE(single_camera_groups({set_of({0})}, {{}}, s.models).empty());
}

TEST(SingleCameraGroups, StopAtTheShorterOfCamerasAndViews) {
  const shooting s;
  const auto groups = single_camera_groups({set_of({0, 1})}, {{{s.seen(0, 0)}}}, s.models);
  ASSERT_EQ(groups.size(), 1u);
  EXPECT_EQ(groups[0].cameras, std::vector<std::size_t>{0});
}

TEST(SingleCameraGroups, GiveACameraThatStandsTwiceBothViewsAsShotsOfTheirOwn) {
  const shooting s;
  const auto groups =
      single_camera_groups({set_of({1, 1})}, {{{s.seen(1, 0), s.seen(1, 1)}}}, s.models);
  ASSERT_EQ(groups.size(), 1u);
  EXPECT_EQ(groups[0].cameras, std::vector<std::size_t>{1});
  EXPECT_EQ(groups[0].shots.size(), 2u);
  EXPECT_EQ(groups[0].shots[0].size(), 1u);
}

TEST(SingleCameraGroups, LeaveOutAViewWhosePoseIsNotANumberAndNameIt) {
  const shooting s;
  std::vector<view_group> groups;
  const std::string printed = printed_by([&] {
    groups = single_camera_groups({set_of({0, 2}, "hall")},
                                  {{{s.seen(0, 0), s.seen(2, 0)}, {s.seen(0, 1), s.garbage()}}},
                                  s.models);
  });
  EXPECT_EQ(printed, "View left out, its pose is not a number: set hall, camera 2, frame 1\n");
  ASSERT_EQ(groups.size(), 2u);
  EXPECT_EQ(groups[1].shots.size(), 1u);
}

TEST(CollectPairPoints, HoldsTheLowerCamerasCornersInListOne) {
  const shooting s;
  // The set names the higher camera first.
  const pair_points pairs =
      collect_pair_points({set_of({2, 1})}, {{{s.seen(2, 0), s.seen(1, 0)}}}, s.models);
  ASSERT_EQ(pairs.size(), 1u);
  const auto& [key, lists] = *pairs.begin();
  EXPECT_EQ(key, camera_pair(1, 2));
  ASSERT_EQ(lists.list1.size(), 1u);
  // Both poses are measured from the rig's origin, so the same points come back from both.
  const Eigen::Matrix3Xd expected =
      (rotation_from_vector(s.pose(0).rotation) * board_points(6, 5, 30)).colwise() +
      s.pose(0).translation;
  EXPECT_LT((lists.list1[0] - expected).norm(), 0.1);
  EXPECT_LT((lists.list0[0] - expected).norm(), 0.1);
}

TEST(CollectPairPoints, TellsTheListsApart) {
  const shooting s;
  rig shifted = s.models;
  shifted[2][C_2] = 1000;  // camera 2's own pose lands elsewhere
  const pair_points pairs =
      collect_pair_points({set_of({2, 1})}, {{{s.seen(2, 0), s.seen(1, 0)}}}, shifted);
  const point_lists& lists = pairs.at({1, 2});
  EXPECT_LT(lists.list1[0].row(2).maxCoeff(), 0);
  EXPECT_GT(lists.list0[0].row(2).minCoeff(), 0);
}

TEST(CollectPairPoints, PairsEachTwoCamerasOfAFrame) {
  const shooting s;
  const pair_points pairs = collect_pair_points(
      {set_of({0, 1, 2})},
      {{{s.seen(0, 0), s.seen(1, 0), s.seen(2, 0)}, {s.seen(0, 1), missed, s.seen(2, 1)}, {}}},
      s.models);
  ASSERT_EQ(pairs.size(), 3u);
  EXPECT_EQ(pairs.at({0, 1}).list0.size(), 1u);
  EXPECT_EQ(pairs.at({0, 2}).list0.size(), 2u);
  EXPECT_EQ(pairs.at({1, 2}).list1.size(), 1u);
}

TEST(CollectPairPoints, NeverPairsACameraWithItself) {
  const shooting s;
  EXPECT_TRUE(
      collect_pair_points({set_of({1, 1})}, {{{s.seen(1, 0), s.seen(1, 0)}}}, s.models).empty());
}

TEST(CollectPairPoints, LeavesOutAViewWhosePoseIsNotANumber) {
  const shooting s;
  pair_points pairs;
  const std::string printed = printed_by([&] {
    pairs =
        collect_pair_points({set_of({0, 1}, "hall")}, {{{s.seen(0, 0), s.garbage()}}}, s.models);
  });
  EXPECT_EQ(printed, "View left out, its pose is not a number: set hall, camera 1, frame 0\n");
  EXPECT_TRUE(pairs.empty());
}

TEST(SharedBoardGroups, KeepFramesByTheListOfTheirCameras) {
  const shooting s;
  const std::vector<cal_frame_set> sets = {set_of({1, 0}), set_of({2}), set_of({0})};
  const board_frames frames = {{{s.seen(1, 0), s.seen(0, 0)},
                                {missed, s.seen(0, 1)},
                                {s.seen(1, 2), s.seen(0, 2)},
                                {s.seen(1, 3)},
                                {missed, missed}},
                               {{missed}},
                               {{s.seen(0, 4)}}};
  const rig_groups got = shared_board_groups(sets, frames, s.models);
  EXPECT_EQ(got.groups_per_set, (std::vector<std::size_t>{3, 0, 1}));
  ASSERT_EQ(got.groups.size(), 4u);
  // Lists in lexicographic order, each in the order of the set.
  EXPECT_EQ(got.groups[0].cameras, std::vector<std::size_t>{0});
  EXPECT_EQ(got.groups[1].cameras, std::vector<std::size_t>{1});
  EXPECT_EQ(got.groups[2].cameras, (std::vector<std::size_t>{1, 0}));
  EXPECT_EQ(got.groups[2].shots.size(), 2u);
  EXPECT_EQ(got.groups[2].shots[1].size(), 2u);
  EXPECT_LT((got.groups[2].poses[1].translation - s.pose(2).translation).norm(), 1e-2);
  EXPECT_EQ(got.groups[3].cameras, std::vector<std::size_t>{0});
}

TEST(SharedBoardGroups, LeaveOutAFrameWhosePoseIsNotANumberAndNameIt) {
  const shooting s;
  rig_groups got;
  const std::string printed = printed_by([&] {
    got = shared_board_groups({set_of({0, 1}, "hall")},
                              {{{s.seen(0, 0), s.seen(1, 0)}, {s.garbage(), s.seen(1, 1)}}},
                              s.models);
  });
  EXPECT_EQ(printed, "Frame left out, its pose is not a number: set hall, frame 1\n");
  ASSERT_EQ(got.groups.size(), 1u);
  EXPECT_EQ(got.groups[0].shots.size(), 1u);
}

TEST(BoardGroups, BuildNoPointsOfABoardThatNobodySaw) {
  // Its points would fit in no memory.
  cal_frame_set huge = set_of({0, 1});
  huge.board_width = huge.board_height = 2000000000;
  const board_frames frames = {{{missed, missed}, {}}};
  const shooting s;
  EXPECT_TRUE(single_camera_groups({huge}, frames, s.models).empty());
  EXPECT_TRUE(collect_pair_points({huge}, frames, s.models).empty());
  const rig_groups shared = shared_board_groups({huge}, frames, s.models);
  EXPECT_TRUE(shared.groups.empty());
  EXPECT_EQ(shared.groups_per_set, std::vector<std::size_t>{0});
}

}  // namespace
}  // namespace ocpan

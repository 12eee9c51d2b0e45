#include "simulator/board_poses.h"

#include <cmath>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "model/projection.h"
#include "simulator/presets.h"

namespace ocpan {
namespace {

// One rectilinear camera of 1000 by 800 pixels and 90 degrees at the origin: 500 pixels
// per unit tangent.
rig_camera plain_camera() {
  const camera_details details{1000, 800, 90, 0};
  return {details, initial_model(details)};
}

// A board straight before the camera with its first corner on the axis.
ModelPose facing(double distance) {
  return {Eigen::Vector3d(pi, 0, 0), Eigen::Vector3d(0, 0, -distance)};
}

rig_description small_rig() {
  rig_description description;
  EXPECT_EQ(make_preset(description, "3-lens0"), "");
  return description;
}

series_poses poses_of(const rig_description& description) {
  series_poses poses;
  EXPECT_EQ(place_boards(poses, description), "");
  return poses;
}

TEST(BoardPoints, RunAlongTheRowsFirst) {
  const Eigen::Matrix3Xd points = board_points({4, 3, 10.0});
  ASSERT_EQ(points.cols(), 12);
  EXPECT_EQ(points.col(3), Eigen::Vector3d(30, 0, 0));
  EXPECT_EQ(points.col(4), Eigen::Vector3d(0, 10, 0));
  EXPECT_EQ(points.col(11), Eigen::Vector3d(30, 20, 0));
}

TEST(TrueCorners, OfAFacingBoardRunRightAndDown) {
  rig_description description;
  description.cameras = {plain_camera()};
  description.sets = {{"one", {0}, 1}};
  const series_corners corners = true_corners(description, {{facing(500)}});
  const Eigen::Matrix2Xd& view = corners.at(0).at(0).at(0);
  ASSERT_EQ(view.cols(), 54);
  // 25 units at 500 are 25 pixels; the axis meets the picture at (500, 400).
  EXPECT_TRUE(view.col(0).isApprox(Eigen::Vector2d(500, 400), 1e-9));
  EXPECT_TRUE(view.col(1).isApprox(Eigen::Vector2d(525, 400), 1e-9));
  EXPECT_TRUE(view.col(9).isApprox(Eigen::Vector2d(500, 425), 1e-9));
}

TEST(BoardIsVisible, WithItsMarginInThePicture) {
  const board_description board;
  EXPECT_TRUE(board_is_visible(plain_camera(), board, facing(500)));
  // The margin begins 2 squares, 50 pixels, left of the first corner and 4 pixels may not
  // be used.
  ModelPose pose = facing(500);
  pose.translation.x() = -445;
  EXPECT_TRUE(board_is_visible(plain_camera(), board, pose));
  pose.translation.x() = -447;
  EXPECT_FALSE(board_is_visible(plain_camera(), board, pose));
}

TEST(BoardIsVisible, OnlyWithSquaresFourteenPixelsHigh) {
  const board_description board;
  EXPECT_TRUE(board_is_visible(plain_camera(), board, facing(25 * 500 / 14.1)));
  EXPECT_FALSE(board_is_visible(plain_camera(), board, facing(25 * 500 / 13.9)));
}

TEST(BoardIsVisible, NotAtAGlance) {
  // Tilted by 70 degrees a square of 41 pixels is 14 high but three times as wide.
  const board_description board{3, 3, 25.0};
  const auto tilted = [](double degrees) {
    return ModelPose{Eigen::Vector3d(pi - degrees * pi / 180, 0, 0), Eigen::Vector3d(0, 0, -250)};
  };
  EXPECT_TRUE(board_is_visible(plain_camera(), board, tilted(50)));
  EXPECT_FALSE(board_is_visible(plain_camera(), board, tilted(70)));
}

TEST(BoardIsVisible, NotBehindTheCamera) {
  EXPECT_FALSE(board_is_visible(plain_camera(), {}, facing(-500)));
}

TEST(BoardIsVisible, NotOutsideTheCircleOfARoundPicture) {
  // Equal-area, 180 degrees over 1000 pixels: the corner of the picture is at 180 degrees
  // from the axis, its circle ends at 90. Half the board's diagonal is 15 degrees.
  const camera_details details{1000, 1000, 180, 2};
  const rig_camera camera{details, initial_model(details)};
  const board_description board{3, 3, 25.0};
  const auto at_angle = [](double degrees) {
    const double angle = degrees * pi / 180, side = std::sin(angle) * std::sqrt(0.5);
    const Eigen::Vector3d ray(side, side, -std::cos(angle));
    const Eigen::Matrix3d turn =
        Eigen::Quaterniond::FromTwoVectors(Eigen::Vector3d(0, 0, -1), ray).toRotationMatrix() *
        rotation_from_vector(Eigen::Vector3d(pi, 0, 0));
    return ModelPose{vector_from_rotation(turn), 400 * ray - turn * Eigen::Vector3d(25, 25, 0)};
  };
  EXPECT_TRUE(board_is_visible(camera, board, at_angle(70)));
  EXPECT_FALSE(board_is_visible(camera, board, at_angle(80)));
}

TEST(PlaceBoards, DependsOnTheDescriptionAlone) {
  rig_description description = small_rig();
  const series_poses once = poses_of(description), again = poses_of(description);
  EXPECT_EQ(once[4][9].translation, again[4][9].translation);
  EXPECT_EQ(once[4][9].rotation, again[4][9].rotation);
  description.seed += 1;
  EXPECT_NE(once[4][9].translation, poses_of(description)[4][9].translation);
}

TEST(PlaceBoards, GivesEverySetItsFramesWithTheBoardInAllItsPictures) {
  const rig_description description = small_rig();
  const series_poses poses = poses_of(description);
  const series_corners corners = true_corners(description, poses);
  int seen = 0;
  ASSERT_EQ(poses.size(), 5u);
  for (std::size_t s = 0; s < poses.size(); ++s) {
    ASSERT_EQ(poses[s].size(), 10u);
    for (const auto& views : corners[s]) {
      ASSERT_EQ(views.size(), description.sets[s].cameras.size());
      for (const Eigen::Matrix2Xd& view : views) {
        EXPECT_GT(view.minCoeff(), 20);
        EXPECT_LT(view.row(0).maxCoeff(), 1260);
        EXPECT_LT(view.row(1).maxCoeff(), 940);
        // Right-handed in the picture, so nowhere seen from behind.
        const Eigen::Vector2d x = view.col(1) - view.col(0), y = view.col(9) - view.col(0);
        EXPECT_GT(x.x() * y.y() - x.y() * y.x(), 0);
        ++seen;
      }
    }
  }
  EXPECT_EQ(seen, 3 * 10 + 2 * 10 * 2);
}

TEST(PlaceBoards, KeepsTheTiltWithinItsLimit) {
  rig_description description = small_rig();
  description.poses.tilt_degrees = 15;
  description.sets.resize(1);
  const Eigen::Vector3d middle(100, 62.5, 0);
  const series_poses poses = poses_of(description);
  for (const ModelPose& pose : poses.at(0)) {
    const Eigen::Matrix3d turn = rotation_from_vector(pose.rotation);
    const Eigen::Vector3d ray = (turn * middle + pose.translation).normalized();
    EXPECT_GT(ray.dot(turn.col(2)), std::cos(15.01 * pi / 180));
  }
}

TEST(PlaceBoards, SpreadsTheBoardsOverThePicture) {
  rig_description description = small_rig();
  description.sets.resize(1);
  const series_corners corners = true_corners(description, poses_of(description));
  int quarters[2][2] = {};
  for (const auto& views : corners[0]) {
    const Eigen::Vector2d middle = views[0].rowwise().mean();
    ++quarters[middle.x() > 640][middle.y() > 480];
  }
  for (const auto& row : quarters) {
    for (const int boards : row) EXPECT_GE(boards, 1);
  }
}

TEST(PlaceBoards, TellsWhichSetHasNoPlace) {
  rig_description description = small_rig();
  description.sets = {{"near", {0}, 1}, {"apart", {1, 2}, 1}};
  description.poses.min_distance = description.poses.max_distance = 200;
  series_poses poses;
  const std::string error = place_boards(poses, description);
  EXPECT_TRUE(error.starts_with("sets[1]: no place for the board of \"apart\"")) << error;
}

TEST(CornerNoise, HasTheDeviationAskedForAndNoMean) {
  series_corners corners{{{Eigen::Matrix2Xd::Zero(2, 20000)}}};
  add_corner_noise(corners, 0.25, 7);
  const Eigen::ArrayXXd noise = corners[0][0][0].array();
  // 40000 samples: the mean's deviation is 0.00125, the deviation's 0.0009.
  EXPECT_NEAR(noise.mean(), 0, 0.006);
  EXPECT_NEAR(std::sqrt((noise * noise).mean()), 0.25, 0.005);
}

}  // namespace
}  // namespace ocpan

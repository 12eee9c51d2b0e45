#include "simulator/render_board.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "simulator/board_poses.h"
#include "simulator/presets.h"

namespace ocpan {
namespace {

constexpr rendering_options without_flaws{0, 0, 0, "png"};

// The RMS distance of the corners that OpenCV finds in the first frames of a set of one
// camera to where they truly are, in the true order; pixels.
double detection_error(const std::string& preset, int frames) {
  rig_description description;
  EXPECT_EQ(make_preset(description, preset), "");
  description.sets = {{"one", {1}, frames}};
  series_poses poses;
  EXPECT_EQ(place_boards(poses, description), "");
  const series_corners truth = true_corners(description, poses);
  const rig_camera& camera = description.cameras[1];
  const cv::Mat field = field_of_view(camera);
  double squares = 0;
  for (std::size_t f = 0; f < poses[0].size(); ++f) {
    const cv::Mat picture =
        render_board(camera, field, description.board, &poses[0][f], description.rendering, f);
    std::vector<cv::Point2f> corners;
    const bool found = cv::findChessboardCorners(picture, cv::Size(9, 6), corners, 3);
    EXPECT_TRUE(found) << preset << " frame " << f;
    if (!found) return -1;
    cv::cornerSubPix(picture, corners, cv::Size(3, 3), cv::Size(-1, -1),
                     cv::TermCriteria(3, 1000, 0.001));
    for (int k = 0; k < 54; ++k) {
      const cv::Point2f corner = corners[static_cast<std::size_t>(k)];
      squares += (truth[0][f][0].col(k) - Eigen::Vector2d(corner.x, corner.y)).squaredNorm();
    }
  }
  return std::sqrt(squares / (54 * frames));
}

rig_camera plain_camera(int lens, float hfov = 90) {
  const camera_details details{200, 160, hfov, lens};
  return {details, initial_model(details)};
}

// 9 by 6 squares' corners at 10 pixels apart around the middle of plain_camera(0).
ModelPose facing() { return {Eigen::Vector3d(pi, 0, 0), Eigen::Vector3d(-100, 62.5, -250)}; }

TEST(RenderBoard, CornersAreFoundWhereTheTruthPutsThemThroughEveryLens) {
  for (const char* preset : {"3-lens0", "4-lens1-off-axis", "2-lens2-unlike"}) {
    const double error = detection_error(preset, 2);
    EXPECT_GT(error, 0) << preset;
    EXPECT_LT(error, 0.075) << preset;
  }
}

TEST(RenderBoard, FlawlessPictureIsExactWithinAndAtTheEdgesOfSquares) {
  const cv::Mat picture =
      render_board(plain_camera(0), {}, {9, 6, 25.0}, nullptr, without_flaws, 1);
  const ModelPose pose = facing();
  const cv::Mat with_board =
      render_board(plain_camera(0), {}, {9, 6, 25.0}, &pose, without_flaws, 1);
  // The first corner is at (60, 55): up and left of it a black square of 10 pixels.
  EXPECT_EQ(with_board.at<unsigned char>(50, 55), 40);
  EXPECT_EQ(with_board.at<unsigned char>(60, 65), 40);
  EXPECT_EQ(with_board.at<unsigned char>(50, 65), 205);
  // The pixel on an edge is half of each.
  EXPECT_NEAR(with_board.at<unsigned char>(50, 60), (40 + 205) / 2., 1);
  // The margin is a square wide, and beside it the ground is as without a board.
  EXPECT_EQ(with_board.at<unsigned char>(40, 55), 205);
  EXPECT_EQ(with_board.at<unsigned char>(36, 42), 205);
  EXPECT_EQ(with_board.at<unsigned char>(33, 55), picture.at<unsigned char>(33, 55));
  EXPECT_EQ(with_board.at<unsigned char>(55, 38), picture.at<unsigned char>(55, 38));
}

TEST(RenderBoard, BoardThatLeavesThePictureIsDrawnAsFarAsItIsSeen) {
  ModelPose pose = facing();
  pose.translation.x() -= 150;  // 60 pixels to the left: the first corner is at (0, 55)
  const cv::Mat picture = render_board(plain_camera(0), {}, {9, 6, 25.0}, &pose, without_flaws, 1);
  EXPECT_EQ(picture.at<unsigned char>(60, 5), 40);
  EXPECT_EQ(picture.at<unsigned char>(50, 5), 205);
}

TEST(RenderBoard, BoardBehindTheCameraIsNotDrawn) {
  ModelPose pose = facing();
  pose.translation.z() = 250;
  const cv::Mat with_board =
      render_board(plain_camera(0), {}, {9, 6, 25.0}, &pose, without_flaws, 1);
  const cv::Mat without =
      render_board(plain_camera(0), {}, {9, 6, 25.0}, nullptr, without_flaws, 1);
  EXPECT_EQ(cv::norm(with_board, without, cv::NORM_INF), 0);
}

TEST(RenderBoard, NoiseHasTheDeviationAskedFor) {
  rendering_options noisy = without_flaws;
  noisy.noise = 4;
  const cv::Mat clean = render_board(plain_camera(0), {}, {}, nullptr, without_flaws, 1);
  const cv::Mat picture = render_board(plain_camera(0), {}, {}, nullptr, noisy, 1);
  cv::Mat difference;
  cv::subtract(picture, clean, difference, {}, CV_32F);
  cv::Scalar mean, deviation;
  cv::meanStdDev(difference, mean, deviation);
  EXPECT_NEAR(mean[0], 0, 0.1);
  EXPECT_NEAR(deviation[0], 4, 0.15);
}

TEST(RenderBoard, UnevenLightChangesOneSideAgainstTheOther) {
  rendering_options uneven = without_flaws;
  uneven.uneven_light = 0.5;
  const cv::Mat clean = render_board(plain_camera(0), {}, {}, nullptr, without_flaws, 1);
  const cv::Mat picture = render_board(plain_camera(0), {}, {}, nullptr, uneven, 1);
  cv::Mat ratio;
  cv::divide(picture, clean, ratio, 1, CV_32F);
  double darkest = 0, lightest = 0;
  cv::minMaxLoc(ratio, &darkest, &lightest);
  EXPECT_GT(lightest, 1.3);
  EXPECT_LT(lightest, 1.52);
  EXPECT_LT(darkest, 0.7);
  EXPECT_GT(darkest, 0.48);
}

TEST(RenderBoard, SameSeedGivesTheSamePicture) {
  const rendering_options options;
  const auto render = [&](std::uint64_t seed) {
    return render_board(plain_camera(0), {}, {}, nullptr, options, seed);
  };
  EXPECT_EQ(cv::norm(render(5), render(5), cv::NORM_INF), 0);
  EXPECT_GT(cv::norm(render(5), render(6), cv::NORM_INF), 0);
}

TEST(FieldOfView, IsTheCircleOfARoundPictureOnly) {
  EXPECT_TRUE(field_of_view(plain_camera(0)).empty());
  EXPECT_TRUE(field_of_view(plain_camera(1)).empty());
  // 180 degrees over a width of 200: the circle has the radius 100 about (100, 80).
  const cv::Mat field = field_of_view(plain_camera(2, 180));
  EXPECT_EQ(field.at<float>(80, 1), 1);
  EXPECT_EQ(field.at<float>(80, 100), 1);
  EXPECT_EQ(field.at<float>(10, 20), 0);
  EXPECT_NEAR(cv::sum(field)[0], 28000, 600);  // less than half a circle above, as below
}

TEST(FieldOfView, IsDarkOutside) {
  const rig_camera camera = plain_camera(2, 180);
  const cv::Mat picture =
      render_board(camera, field_of_view(camera), {}, nullptr, without_flaws, 1);
  EXPECT_EQ(picture.at<unsigned char>(10, 20), 0);
  EXPECT_GT(picture.at<unsigned char>(80, 100), 80);
}

}  // namespace
}  // namespace ocpan

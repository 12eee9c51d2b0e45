#include "simulator/masks.h"

#include <cmath>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "simulator/pixel_rays.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

rig_camera camera_turned(int lens, float hfov, double yaw_degrees) {
  const camera_details details{80, 60, hfov, lens};
  const Eigen::Matrix3d turn = rotation_from_vector({0, yaw_degrees * pi / 180, 0});
  return {details, rotate_model(initial_model(details), turn)};
}

rig_description two_cameras() {
  rig_description description;
  description.cameras = {camera_turned(1, 150, 0), camera_turned(1, 150, 60)};
  return description;
}

TEST(PixelRays, AreThoseOfTheModel) {
  // 80 pixels of 90 degrees: 40 pixels per unit tangent about (40, 30).
  const Eigen::Matrix3Xd rays = pixel_rays(camera_turned(0, 90, 0), 50);
  ASSERT_EQ(rays.cols(), 80);
  const Eigen::Vector3d expected = Eigen::Vector3d(-0.75, -0.5, -1).normalized();
  EXPECT_LT((rays.col(10) - expected).norm(), 1e-7);
}

TEST(PixelRays, AreNoNumbersBeyondTheLens) {
  // An equal-area lens of 350 degrees over 80 pixels reaches 40.2 pixels from its middle.
  const Eigen::Matrix3Xd rays = pixel_rays(camera_turned(1, 350, 0), 5);
  EXPECT_FALSE(rays.col(0).allFinite());
  EXPECT_TRUE(rays.col(40).allFinite());
}

TEST(PixelRays, OfLensTwoEndAtTheEllipse) {
  const Eigen::Matrix3Xd circular = pixel_rays(camera_turned(2, 100, 0), 1);
  EXPECT_FALSE(circular.col(5).allFinite());
  EXPECT_TRUE(circular.col(40).allFinite());
  EXPECT_TRUE(pixel_rays(camera_turned(1, 100, 0), 1).col(5).allFinite());
}

TEST(RenderMask, TakesThePixelsNearestToTheOwnAxis) {
  const rig_description description = two_cameras();
  const cv::Mat mask = render_mask(description, 0, 0);
  const Eigen::Vector3d own(0, 0, -1);
  const Eigen::Vector3d other(-std::sin(pi / 3), 0, -std::cos(pi / 3));
  int white = 0, black = 0;
  for (int y = 0; y < 60; ++y) {
    const Eigen::Matrix3Xd rays = pixel_rays(description.cameras[0], y);
    for (int x = 0; x < 80; ++x) {
      const double nearer = rays.col(x).dot(own) - rays.col(x).dot(other);
      if (std::abs(nearer) < 1e-6) continue;
      const int grey = mask.at<unsigned char>(y, x);
      EXPECT_EQ(grey, nearer > 0 ? 255 : 0) << x << " " << y;
      white += grey == 255;
      black += grey == 0;
    }
  }
  EXPECT_GT(white, 2400);
  EXPECT_GT(black, 500);
}

TEST(RenderMask, GrowsByTheOverlap) {
  // In the middle row the border lies 30 degrees to the left of the axis; 10 more are 40.
  const cv::Mat mask = render_mask(two_cameras(), 0, 10);
  const Eigen::Matrix3Xd rays = pixel_rays(two_cameras().cameras[0], 30);
  int seen = 0;
  for (int x = 0; x < 80; ++x, ++seen) {
    const double left = std::atan2(-rays(0, x), -rays(2, x)) * 180 / pi;
    EXPECT_EQ(mask.at<unsigned char>(30, x), left < 40 ? 255 : 0) << x;
  }
  EXPECT_EQ(seen, 80);
}

TEST(RenderMask, IsBlackBeyondTheLens) {
  rig_description description;
  description.cameras = {camera_turned(2, 100, 0)};
  const cv::Mat mask = render_mask(description, 0, 0);
  EXPECT_EQ(mask.at<unsigned char>(0, 0), 0);
  EXPECT_EQ(mask.at<unsigned char>(30, 40), 255);
}

TEST(WriteMasks, NumbersThemFromZero) {
  const testing::temp_folder folder;
  ASSERT_EQ(write_masks(folder.path().string(), two_cameras(), 5), "");
  for (int camera = 0; camera < 2; ++camera) {
    const cv::Mat mask =
        cv::imread(folder.file("mask_" + std::to_string(camera) + ".png"), cv::IMREAD_UNCHANGED);
    ASSERT_EQ(mask.size(), cv::Size(80, 60));
    EXPECT_EQ(mask.type(), CV_8UC1);
  }
}

TEST(WriteMasks, TellsOfAFolderThatIsNotThere) {
  const testing::temp_folder folder;
  const std::string missing = folder.file("missing");
  EXPECT_EQ(write_masks(missing, two_cameras(), 5), missing + "/mask_0.png can't be written");
}

}  // namespace
}  // namespace ocpan

#include "simulator/world.h"

#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

rig_camera camera_at(double x) {
  const camera_details details{80, 60, 90, 0};
  rig_camera camera{details, initial_model(details)};
  camera.model[C_0] = x;
  return camera;
}

int grey_of(const Eigen::Vector3d& direction) {
  return static_cast<int>(world_grey(direction) + 0.5);
}

TEST(PanoramaDirection, MiddleIsMinusZWithXRightAndYUp) {
  // Of 4000 columns the first right of the middle lies half a column off.
  const double step = pi / 2000;
  const Eigen::Vector3d middle = panorama_direction(1000, 2000, 4000);
  EXPECT_NEAR(middle.x(), std::sin(step / 2), 1e-6);
  EXPECT_NEAR(middle.y(), -std::sin(step / 2), 1e-6);
  EXPECT_LT(middle.z(), -0.999);
  EXPECT_GT(panorama_direction(1000, 3000, 4000).x(), 0.999);
  EXPECT_GT(panorama_direction(0, 10, 4000).y(), 0.999);
  EXPECT_GT(panorama_direction(1000, 0, 4000).z(), 0.999);
}

TEST(WorldGrey, HasStrongContrastAndFineDetail) {
  constexpr int width = 720;  // half a degree per column
  double sum = 0, squares = 0, steps = 0;
  int count = 0;
  for (int row = 30; row < 330; ++row) {
    for (int column = 1; column < width; ++column, ++count) {
      const double grey = world_grey(panorama_direction(row, column, width));
      ASSERT_GE(grey, 0);
      ASSERT_LE(grey, 255);
      sum += grey;
      squares += grey * grey;
      steps += std::abs(grey - world_grey(panorama_direction(row, column - 1, width)));
    }
  }
  const double mean = sum / count;
  EXPECT_GT(std::sqrt(squares / count - mean * mean), 50);
  EXPECT_GT(steps / count, 5);  // half a degree apart
}

TEST(WorldGrey, DependsOnTheDirectionAlone) {
  EXPECT_EQ(grey_of({0.2, 0.4, -0.5}), grey_of({2, 4, -5}));
}

TEST(RenderWorld, ShowsTheTextureWhereEachPixelLooks) {
  const cv::Mat picture = render_world(camera_at(0), 1000);
  int seen = 0;
  for (int y = 0; y < 60; y += 7) {
    for (int x = 1; x < 80; x += 6, ++seen) {
      const Eigen::Vector3d ray((x + 1e-7 - 40) / 40.0, (30 - y) / 40.0, -1);
      EXPECT_EQ(picture.at<unsigned char>(y, x), grey_of(ray)) << x << " " << y;
    }
  }
  EXPECT_GT(seen, 100);
}

TEST(RenderWorld, HasDetailOfFourPixels) {
  // 20 degrees over 140 pixels, as fine as a fisheye of 190 degrees over 1280. A blur over
  // five pixels takes away the detail of four.
  const camera_details details{140, 140, 20, 0};
  const cv::Mat picture = render_world({details, initial_model(details)}, 1000);
  cv::Mat blurred, lost;
  cv::blur(picture, blurred, {5, 5});
  cv::absdiff(picture, blurred, lost);
  EXPECT_GT(cv::mean(lost)[0], 4);
}

TEST(RenderWorld, StandsWithinTheSphereOfTheRadius) {
  // From (600, 0, 0) straight ahead the sphere of radius 1000 is met at (600, 0, -800).
  const cv::Mat picture = render_world(camera_at(600), 1000);
  EXPECT_EQ(picture.at<unsigned char>(30, 40), grey_of({600 + 2e-6, 0, -800}));
}

TEST(RenderWorld, IsBlackWhereTheLensSeesNothing) {
  rig_camera camera = camera_at(0);
  camera.details.lens = 2;
  EXPECT_EQ(render_world(camera, 1000).at<unsigned char>(0, 0), 0);
}

TEST(WriteWorld, WritesAPicturePerCameraAndThePanorama) {
  const testing::temp_folder folder;
  rig_description description;
  description.cameras = {camera_at(0), camera_at(10)};
  ASSERT_EQ(write_world(folder.path().string(), description, 1000, 64), "");
  for (const char* name : {"world_0.png", "world_1.png", "panorama.png"}) {
    EXPECT_TRUE(std::filesystem::exists(folder.file(name))) << name;
  }
  const std::string missing = folder.file("missing");
  EXPECT_EQ(write_world(missing, description, 1000, 64), missing + "/world_0.png can't be written");
}

}  // namespace
}  // namespace ocpan

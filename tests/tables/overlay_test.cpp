#include "tables/overlay.h"

#include <cmath>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

cv::Mat random_picture(int side) {
  std::mt19937 random(11);
  cv::Mat picture(side, side, CV_8UC3);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const unsigned bits = random();
      picture.at<cv::Vec3b>(y, x) =
          cv::Vec3b(static_cast<unsigned char>(bits), static_cast<unsigned char>(bits >> 8),
                    static_cast<unsigned char>(bits >> 16));
    }
  }
  return picture;
}

// The whole mapping at once, column by column.
cv::Mat slow_unroll(const cv::Mat& square, int width, int height) {
  const double pi = std::acos(-1.0);
  const int n = square.cols;
  const int c = n / 2;
  const double step = n * 0.5 / height;
  cv::Mat map_x(height, width, CV_32FC1);
  cv::Mat map_y(height, width, CV_32FC1);
  for (int i = 0; i < width; ++i) {
    const auto angle = static_cast<float>(2 * pi * (width / 4 + i) / width);
    for (int j = 0; j < height; ++j) {
      const auto r = static_cast<float>(c - j * step);
      map_x.at<float>(j, i) = std::cos(angle) * r + static_cast<float>(c);
      map_y.at<float>(j, i) = std::sin(angle) * r + static_cast<float>(c);
    }
  }
  cv::Mat rectangle(height, width, CV_8UC3, cv::Scalar::all(255));
  cv::remap(square, rectangle, map_x, map_y, cv::INTER_LINEAR, cv::BORDER_CONSTANT,
            cv::Scalar(0, 0, 0, 0));
  return rectangle;
}

TEST(Overlay, EqualsTheMappingOfThePictureAsAWhole) {
  const testing::temp_folder folder;
  const std::string input = folder.file("in.png");
  const std::string output = folder.file("out.png");
  const struct {
    int side;
    int width;
    int height;
  } cases[] = {{1, 17, 17},     {2, 17, 18},    {65, 33, 31},   {64, 101, 32},
               {200, 123, 457}, {64, 17, 4099}, {64, 4098, 17}, {333, 640, 480}};
  int checked = 0;
  for (const auto& c : cases) {
    const cv::Mat square = random_picture(c.side);
    cv::imwrite(input, square);
    ASSERT_EQ(create_overlay(input.c_str(), output.c_str(), c.width, c.height), 0);
    const cv::Mat expected = slow_unroll(square, c.width, c.height);
    EXPECT_EQ(cv::norm(cv::imread(output), expected, cv::NORM_INF), 0)
        << c.width << " " << c.height;
    ++checked;
  }
  EXPECT_EQ(checked, 8);
}

}  // namespace
}  // namespace ocpan

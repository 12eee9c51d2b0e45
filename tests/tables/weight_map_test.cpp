#include "tables/weight_map.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

cv::Mat filled(int rows, int columns, int grey) {
  return cv::Mat(rows, columns, CV_8UC1, cv::Scalar(grey));
}

TEST(WeightMap, BlackMaskHasNoWeightAndLargestOne) {
  const weight_map map = make_weight_map(filled(3, 4, 0));
  EXPECT_EQ(map.largest, 1.0);
  int seen = 0;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 4; ++column, ++seen) EXPECT_EQ(weight_at(map, row, column), 0);
  }
  EXPECT_EQ(seen, 12);
}

TEST(WeightMap, SingleWhitePixelHasFullWeight) {
  cv::Mat mask = filled(5, 6, 0);
  mask.at<unsigned char>(2, 3) = 255;
  const weight_map map = make_weight_map(mask);
  EXPECT_EQ(map.largest, 1.0);
  EXPECT_EQ(weight_at(map, 2, 3), 1023);
  EXPECT_EQ(weight_at(map, 2, 2), 0);
}

TEST(WeightMap, GreyOf128LiesOutsideAnd129Inside) {
  cv::Mat mask = filled(1, 2, 128);
  mask.at<unsigned char>(0, 1) = 129;
  const weight_map map = make_weight_map(mask);
  EXPECT_EQ(weight_at(map, 0, 0), 0);
  EXPECT_EQ(weight_at(map, 0, 1), 1023);
}

TEST(WeightMap, RimOfWhiteMaskHasDistanceOne) {
  // 3 x 3: the middle is 2 away from the outside, the rim 1; 1023 / 2 + 0.5 = 512.
  const weight_map map = make_weight_map(filled(3, 3, 255));
  EXPECT_EQ(map.largest, 2.0);
  EXPECT_EQ(weight_at(map, 1, 1), 1023);
  EXPECT_EQ(weight_at(map, 0, 0), 512);
  EXPECT_EQ(weight_at(map, 1, 2), 512);
}

TEST(WeightMap, LeavesTheMaskAlone) {
  const cv::Mat mask = filled(2, 2, 200);
  make_weight_map(mask);
  EXPECT_EQ(mask.at<unsigned char>(1, 1), 200);
}

TEST(WeightMap, IsTheEuclideanDistanceToTheNearestPixelOutside) {
  std::mt19937 random(7);
  const int rows = 17, columns = 23;
  cv::Mat mask(rows, columns, CV_8UC1);
  for (int i = 0; i < rows * columns; ++i) mask.data[i] = random() % 12 ? 255 : 0;
  const weight_map map = make_weight_map(mask);
  int seen = 0;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c, ++seen) {
      double nearest = 1e9;
      for (int y = -1; y <= rows; ++y) {
        for (int x = -1; x <= columns; ++x) {
          const bool beyond = y < 0 || x < 0 || y == rows || x == columns;
          if (beyond || !mask.at<unsigned char>(y, x)) {
            nearest = std::min(nearest, std::hypot(y - r, x - c));
          }
        }
      }
      EXPECT_FLOAT_EQ(map.distance.at<float>(r, c), static_cast<float>(nearest)) << r << " " << c;
    }
  }
  EXPECT_EQ(seen, rows * columns);
}

}  // namespace
}  // namespace ocpan

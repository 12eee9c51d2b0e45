#include "production/corner_orientation.h"

#include <cmath>
#include <numeric>

#include <gtest/gtest.h>

#include "model/parameters.h"

namespace ocpan {
namespace {

double sum_of(const orientations& histogram) {
  return std::accumulate(histogram.begin(), histogram.end(), 0.0);
}

orientations histogram_of_one(double bin_position) {
  cv::Mat1d magnitude = cv::Mat1d::zeros(40, 40), angle = cv::Mat1d::zeros(40, 40);
  magnitude(20, 20) = 8;
  angle(20, 20) = bin_position * pi / 32;
  return orientation_histogram(magnitude, angle, 20, 20);
}

TEST(OrientationHistogram, SharesAPixelBetweenTwoBins) {
  const orientations histogram = histogram_of_one(5.25);
  EXPECT_NEAR(histogram[5], 6, 1e-9);
  EXPECT_NEAR(histogram[6], 2, 1e-9);
  EXPECT_NEAR(sum_of(histogram), 8, 1e-9);
}

TEST(OrientationHistogram, ClosesAfterHalfATurn) {
  const orientations last = histogram_of_one(31.75);
  EXPECT_NEAR(last[31], 2, 1e-9);
  EXPECT_NEAR(last[0], 6, 1e-9);
  const orientations opposite = histogram_of_one(32 + 5.25);
  EXPECT_NEAR(opposite[5], 6, 1e-9);
  EXPECT_NEAR(opposite[6], 2, 1e-9);
}

TEST(OrientationHistogram, CountsFromTheTruncatedStartUpToTheTruncatedEnd) {
  // Around (15.7, 16.2) columns 5 to 24 and rows 6 to 25.
  const cv::Mat1d angle = cv::Mat1d::zeros(40, 40);
  const auto counted = [&](int row, int column) {
    cv::Mat1d magnitude = cv::Mat1d::zeros(40, 40);
    magnitude(row, column) = 1;
    return sum_of(orientation_histogram(magnitude, angle, 15.7, 16.2)) > 0;
  };
  EXPECT_TRUE(counted(6, 5));
  EXPECT_TRUE(counted(25, 24));
  EXPECT_FALSE(counted(5, 5));
  EXPECT_FALSE(counted(6, 4));
  EXPECT_FALSE(counted(26, 24));
  EXPECT_FALSE(counted(25, 25));
}

TEST(OrientationHistogram, IsClippedToThePicture) {
  const cv::Mat1d magnitude = cv::Mat1d::ones(12, 16), angle = cv::Mat1d::zeros(12, 16);
  EXPECT_NEAR(sum_of(orientation_histogram(magnitude, angle, 2.5, 1.9)), 12 * 11, 1e-9);
  EXPECT_NEAR(sum_of(orientation_histogram(magnitude, angle, 14.5, 11)), 12 * 11, 1e-9);
  EXPECT_EQ(sum_of(orientation_histogram(magnitude, angle, std::nan(""), 5)), 0);
}

TEST(Smoothed, SpreadsABinByTheNormalDensityRoundTheCircle) {
  orientations histogram{};
  histogram[30] = 2;
  const orientations smooth = smoothed(histogram);
  EXPECT_NEAR(smooth[30], 2 * 0.398942280401, 1e-9);
  EXPECT_NEAR(smooth[29], 2 * 0.241970724519, 1e-9);
  EXPECT_NEAR(smooth[0], 2 * 0.053990966513, 1e-9);
  EXPECT_NEAR(smooth[1], 2 * 0.004431848412, 1e-9);
  EXPECT_NEAR(smooth[14], 2 * 0.398942280401 * std::exp(-128.0), 1e-60);
}

TEST(OrientationPeaks, StandAboveBothNeighboursAndComeStrongestFirst) {
  orientations histogram{};
  histogram[0] = 3;
  histogram[8] = 5;
  histogram[20] = 4;
  histogram[21] = 4;  // a plateau is no peak
  const auto peaks = orientation_peaks(histogram);
  ASSERT_EQ(peaks.size(), 2u);
  EXPECT_EQ(peaks[0].value, 5);
  EXPECT_NEAR(peaks[0].direction.x(), std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(peaks[0].direction.y(), std::sqrt(0.5), 1e-12);
  EXPECT_EQ(peaks[1].value, 3);
  EXPECT_EQ(peaks[1].direction, Eigen::Vector2d(1, 0));
}

TEST(OrientationPeaks, KeepTheLowerBinFirstAmongEquals) {
  orientations histogram{};
  histogram[31] = 2;
  histogram[16] = 2;
  const auto peaks = orientation_peaks(histogram);
  ASSERT_EQ(peaks.size(), 2u);
  EXPECT_NEAR(peaks[0].direction.y(), 1, 1e-12);
}

TEST(OrientationPeaks, AreNoneInAFlatHistogram) {
  orientations histogram;
  histogram.fill(1);
  EXPECT_TRUE(orientation_peaks(histogram).empty());
}

}  // namespace
}  // namespace ocpan

#include "production/corner_response.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "production/corner_detection.h"

namespace ocpan {
namespace {

// Four triangles that meet in the middle of 31 by 31 pixels: 200 to the left and right, 0
// above and below, 100 on the diagonals.
cv::Mat1f diagonal_crossing() {
  cv::Mat1f picture(31, 31);
  for (int y = 0; y < 31; ++y) {
    for (int x = 0; x < 31; ++x) {
      const int across = std::abs(x - 15), up = std::abs(y - 15);
      picture(y, x) = across > up ? 200.0F : across < up ? 0.0F : 100.0F;
    }
  }
  return picture;
}

float replicated(const cv::Mat1f& picture, int y, int x) {
  return picture(std::clamp(y, 0, picture.rows - 1), std::clamp(x, 0, picture.cols - 1));
}

// One step after the other, each on the whole picture.
cv::Mat1d plain_response(const cv::Mat1f& picture, int radius, int& dropped) {
  const double pi = std::acos(-1.0);
  const cv::Mat1d plus = (cv::Mat1d(3, 3) << 0, 0.2, 0, 0.2, 0.2, 0.2, 0, 0.2, 0);
  cv::Mat1f local, neighbourhood, response(picture.size());
  cv::filter2D(picture, local, -1, plus, cv::Point(-1, -1), 0, 4);
  cv::blur(picture, neighbourhood, cv::Size(2 * radius + 1, 2 * radius + 1), cv::Point(-1, -1), 4);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      float i[16];
      for (int n = 0; n < 16; ++n) {
        i[n] = replicated(picture, y + static_cast<int>(std::round(radius * std::sin(n * pi / 8))),
                          x + static_cast<int>(std::round(radius * std::cos(n * pi / 8))));
      }
      float value = 0;
      for (int n = 0; n < 3; ++n) value += std::abs(i[n] + i[n + 8] - i[n + 4] - i[n + 12]);
      for (int n = 0; n < 7; ++n) value -= std::abs(i[n] - i[n + 8]);
      value -= 16.0F * std::abs(neighbourhood(y, x) - local(y, x));
      response(y, x) = value > 32 ? value : 0;
    }
  }
  cv::Mat1d connected = cv::Mat1d::zeros(picture.size());
  dropped = 0;
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      int neighbours = 0;
      for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
          const cv::Point at(x + dx, y + dy);
          const bool inside = at.inside(cv::Rect({0, 0}, picture.size()));
          if (inside && (dx != 0 || dy != 0) && response(at) != 0) ++neighbours;
        }
      }
      if (neighbours > 0) connected(y, x) = response(y, x);
      if (neighbours == 0 && response(y, x) != 0) ++dropped;
    }
  }
  return connected;
}

cv::Mat1f random_picture(int rows, int columns, unsigned seed) {
  std::mt19937 numbers(seed);
  cv::Mat1b picture(rows, columns);
  for (uchar& value : picture) value = static_cast<uchar>(numbers() % 256);
  cv::GaussianBlur(picture, picture, cv::Size(5, 5), 1.5);
  return picture * 2 - 128;
}

double response_in_middle(const cv::Mat1f& picture, int radius) {
  corner_scratch scratch;
  return corner_response(picture, radius, scratch)(15, 15);
}

TEST(CornerResponse, OfACrossingIsTwoSumTermsOfFourHundred) {
  // The samples on the diagonals, 2, 6, 10 and 14, cancel one another, opposite samples and
  // the two means are equal; a fourth sum term would add another 400.
  EXPECT_NEAR(response_in_middle(diagonal_crossing(), 5), 800, 0.01);
}

TEST(CornerResponse, LosesTheDifferenceOfOppositeSamples) {
  cv::Mat1f picture = diagonal_crossing();
  // Sample 3 lies at (2, 5): it is in no sum term. 121 more raise the mean of 121 pixels by 1.
  picture(20, 17) += 121;
  EXPECT_NEAR(response_in_middle(picture, 5), 800 - 121 - 16, 0.01);
}

TEST(CornerResponse, HasNoTermForTheLastPairOfSamples) {
  cv::Mat1f picture = diagonal_crossing();
  // Sample 7 lies at (-5, 2).
  picture(17, 10) -= 121;
  EXPECT_NEAR(response_in_middle(picture, 5), 800 - 16, 0.01);
}

TEST(CornerResponse, LosesSixteenTimesTheDifferenceOfTheMeans) {
  cv::Mat1f picture = diagonal_crossing();
  picture(15, 15) += 60.5F;  // the local mean by 12.1, the neighbourhood's by 0.5
  EXPECT_NEAR(response_in_middle(picture, 5), 800 - 16 * 11.6, 0.01);
}

TEST(CornerResponse, IsNoneUpToTheFloor) {
  // Two sum terms of 4 times 4 each make the floor.
  const cv::Mat1f weak = (diagonal_crossing() - 100) * 0.04;
  EXPECT_EQ(response_in_middle(weak, 5), 0);
  EXPECT_NEAR(response_in_middle(weak * 2.5, 5), 80, 0.01);
}

TEST(CornerResponse, IsNoneWithoutANeighbour) {
  // A little above the floor the middle stands alone.
  const cv::Mat1f weak = (diagonal_crossing() - 100) * 0.0401;
  EXPECT_EQ(response_in_middle(weak, 5), 0);
}

TEST(CornerResponse, IsNoneInAPlainPicture) {
  corner_scratch scratch;
  EXPECT_EQ(cv::countNonZero(corner_response(cv::Mat1f(20, 30, 77.0F), 7, scratch)), 0);
}

TEST(CornerResponse, EqualsThePlainStepsBitForBit) {
  corner_scratch scratch;
  int responses = 0, dropped_pixels = 0;
  for (const int radius : {1, 5, 7, 9, 13}) {
    for (const cv::Size size : {cv::Size(97, 61), cv::Size(40, 9), cv::Size(3, 50)}) {
      const cv::Mat1f picture = random_picture(size.height, size.width, 5);
      int dropped = 0;
      const cv::Mat1d expected = plain_response(picture, radius, dropped);
      EXPECT_EQ(cv::norm(corner_response(picture, radius, scratch), expected, cv::NORM_INF), 0)
          << radius << ' ' << size;
      responses += cv::countNonZero(expected);
      dropped_pixels += dropped;
    }
  }
  EXPECT_GT(responses, 100);
  EXPECT_GT(dropped_pixels, 5);
}

TEST(CornerResponse, RaisesAMaximumOnlyWhereItIsHigher) {
  corner_scratch scratch;
  const cv::Mat1f picture = diagonal_crossing();
  prepare_response(picture, 5, scratch);
  cv::Mat1f maximum(31, 31, 900.0F);
  raise_to_response(maximum, picture, 5, scratch);
  EXPECT_EQ(cv::countNonZero(maximum != 900.0), 0);
  maximum = 1.0F;
  raise_to_response(maximum, picture, 5, scratch);
  EXPECT_NEAR(maximum(15, 15), 800, 0.01);
  EXPECT_EQ(maximum(0, 0), 1.0F);
}

std::vector<cv::Point2d> plain_candidates(const cv::Mat1b& picture) {
  cv::Mat smooth, dilated;
  cv::GaussianBlur(picture, smooth, cv::Size(5, 5), 1.0, 0, 4);
  cv::Mat1d most = cv::Mat1d::zeros(picture.size());
  int dropped = 0;
  for (const int radius : {5, 7, 9, 13}) {
    const cv::Mat1d response = plain_response(cv::Mat1f(smooth), radius, dropped);
    response.copyTo(most, response > most);
  }
  cv::dilate(most, dilated, cv::getStructuringElement(cv::MORPH_RECT, cv::Size(7, 7)));
  std::vector<cv::Point> peaks;
  cv::findNonZero((most >= 32.0) & (most >= dilated), peaks);
  std::vector<cv::Point2d> candidates;
  for (const cv::Point& peak : peaks) {
    double sum = 0, x_sum = 0, y_sum = 0;
    for (int y = peak.y - 5; y <= peak.y + 5; ++y) {
      for (int x = peak.x - 5; x <= peak.x + 5; ++x) {
        if (!cv::Point(x, y).inside(cv::Rect({0, 0}, picture.size()))) continue;
        sum += most(y, x);
        x_sum += most(y, x) * x;
        y_sum += most(y, x) * y;
      }
    }
    if (sum >= 800.0) candidates.emplace_back(x_sum / sum, y_sum / sum);
  }
  return candidates;
}

TEST(DetectCornerCandidates, EqualThePlainSteps) {
  corner_scratch scratch;
  std::size_t found = 0;
  for (const int side : {16, 6, 3}) {
    // Blocks at random bear crossings everywhere, also at the rim.
    std::mt19937 numbers(1);
    cv::Mat1b blocks(245 / side, 325 / side), picture;
    for (uchar& value : blocks) value = numbers() % 2 == 0 ? 30 : 220;
    cv::resize(blocks, picture, cv::Size(325, 245), 0, 0, cv::INTER_NEAREST);
    const auto expected = plain_candidates(picture);
    const auto candidates = detect_corner_candidates(picture, scratch);
    ASSERT_EQ(candidates.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_NEAR(candidates[i].x, expected[i].x, 1e-9);
      EXPECT_NEAR(candidates[i].y, expected[i].y, 1e-9);
    }
    found += expected.size();
  }
  EXPECT_GT(found, 50u);
}

TEST(DetectCornerCandidates, GiveACornerOnceThoughSeveralRadiiPeakThere) {
  cv::Mat1b picture(81, 81, uchar{20});
  picture(cv::Rect(0, 0, 41, 41)) = 220;
  picture(cv::Rect(40, 40, 41, 41)) = 220;
  picture.row(40) = 120;
  picture.col(40) = 120;
  corner_scratch scratch;
  const auto candidates = detect_corner_candidates(picture, scratch);
  ASSERT_EQ(candidates.size(), 1u);
  EXPECT_NEAR(candidates[0].x, 40, 0.01);
  EXPECT_NEAR(candidates[0].y, 40, 0.01);
}

TEST(DetectCornerCandidates, AreNoneInAPictureSmallerThanTheRing) {
  corner_scratch scratch;
  EXPECT_TRUE(detect_corner_candidates(cv::Mat1b(1, 1, uchar{9}), scratch).empty());
  EXPECT_TRUE(detect_corner_candidates(cv::Mat1b(3, 2, uchar{9}), scratch).empty());
}

}  // namespace
}  // namespace ocpan

#include "production/corner_score.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

cv::Mat1d random_image(int rows, int columns, unsigned seed) {
  std::mt19937 numbers(seed);
  cv::Mat1d image(rows, columns);
  for (double& value : image) value = static_cast<double>(numbers() % 256);
  return image;
}

// 220 in two opposite quadrants round (15.5, 15.5), 20 in the others, and a gradient that is
// 100 within 1.5 pixels of the edges.
struct ideal_corner {
  cv::Mat1d picture = cv::Mat1d(32, 32, 20.0);
  cv::Mat1d magnitude = cv::Mat1d::zeros(32, 32);
  prod_corner corner = {15.5, 15.5, 1, 0, 0, 1};
  ideal_corner() {
    picture(cv::Rect(0, 0, 16, 16)) = 220;
    picture(cv::Rect(16, 16, 16, 16)) = 220;
    magnitude(cv::Rect(15, 0, 2, 32)) = 100;
    magnitude(cv::Rect(0, 15, 32, 2)) = 100;
  }
};

double pi_value() { return std::acos(-1.0); }

double plain_score(const cv::Mat1d& picture, const cv::Mat1d& magnitude, const prod_corner& c,
                   int r) {
  std::vector<double> seen, filter;
  double weights[4] = {}, sums[4] = {};
  const double a = std::atan2(c.e1_y, c.e1_x), b = std::atan2(c.e2_y, c.e2_x);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      if (y < std::round(c.y - r) || y >= std::round(c.y + r + 1)) continue;
      if (x < std::round(c.x - r) || x >= std::round(c.x + r + 1)) continue;
      const double dx = x - c.x, dy = y - c.y;
      const double s1 = dy * std::cos(a) - dx * std::sin(a);
      const double s2 = dy * std::cos(b) - dx * std::sin(b);
      const double w = std::exp(-2 * (dx * dx + dy * dy) / (r * r)) / std::sqrt(2 * pi_value());
      const bool in[4] = {s1 <= -0.1 && s2 <= -0.1, s1 >= 0.1 && s2 >= 0.1, s1 <= -0.1 && s2 >= 0.1,
                          s1 >= 0.1 && s2 <= -0.1};
      for (int k = 0; k < 4; ++k) {
        if (!in[k]) continue;
        weights[k] += w;
        sums[k] += w * picture(y, x);
      }
      const auto squared_distance = [&](double ex, double ey) {
        const double along = dx * ex + dy * ey;
        return std::pow(dx - along * ex, 2) + std::pow(dy - along * ey, 2);
      };
      seen.push_back(magnitude(y, x));
      filter.push_back(
          squared_distance(c.e1_x, c.e1_y) < 2.25 || squared_distance(c.e2_x, c.e2_y) < 2.25 ? 1
                                                                                             : -1);
    }
  }
  const auto normalise = [](std::vector<double>& values) {
    double mean = 0, squares = 0;
    for (const double v : values) mean += v / static_cast<double>(values.size());
    for (const double v : values) squares += (v - mean) * (v - mean);
    const double deviation = std::sqrt(squares / static_cast<double>(values.size()));
    for (double& v : values) v = (v - mean) / deviation;
  };
  normalise(seen);
  normalise(filter);
  double correlation = 0;
  for (std::size_t i = 0; i < seen.size(); ++i) correlation += seen[i] * filter[i];
  const double gradient = std::max(0.0, correlation / static_cast<double>(seen.size() - 1));
  double t[4], mu = 0;
  for (int k = 0; k < 4; ++k) mu += (t[k] = sums[k] / weights[k]) / 4;
  const double one = std::min({t[0] - mu, t[1] - mu, mu - t[2], mu - t[3]});
  const double two = std::min({mu - t[0], mu - t[1], t[2] - mu, t[3] - mu});
  return gradient * std::max({one, two, 0.0});
}

TEST(CornerScore, OfAnIdealCornerIsHalfItsContrastTimesAFullCorrelation) {
  const ideal_corner ideal;
  // At radius 4 the patch has rows and columns 12 to 20 of which 15 and 16 bear the edges:
  // gradient and filter agree, and n / (n - 1) is 81 / 80. A pixel 0.5 off the edge is in.
  EXPECT_NEAR(corner_score(ideal.picture, ideal.magnitude, ideal.corner, 4), 100 * 81.0 / 80, 1e-9);
}

TEST(CornerScore, IsTheSameForTheOtherPairOfBrightQuadrants) {
  const ideal_corner ideal;
  const cv::Mat1d inverted = 240 - ideal.picture;
  EXPECT_NEAR(corner_score(inverted, ideal.magnitude, ideal.corner, 4), 100 * 81.0 / 80, 1e-9);
}

TEST(CornerScore, IsNoneWhereTheGradientLiesOffTheEdges) {
  const ideal_corner ideal;
  const cv::Mat1d off = 100 - ideal.magnitude;
  EXPECT_EQ(corner_score(ideal.picture, off, ideal.corner, 4), 0);
}

TEST(CornerScore, IsNoneForASingleEdge) {
  ideal_corner ideal;
  ideal.picture.rowRange(0, 16) = 20;
  ideal.picture.rowRange(16, 32) = 220;
  EXPECT_NEAR(corner_score(ideal.picture, ideal.magnitude, ideal.corner, 4), 0, 1e-9);
}

TEST(CornerScore, IsNoneWithoutAGradient) {
  const ideal_corner ideal;
  EXPECT_EQ(corner_score(ideal.picture, cv::Mat1d::ones(32, 32), ideal.corner, 4), 0);
}

TEST(CornerScore, IsNoneWhereAQuadrantLiesOutsideThePicture) {
  ideal_corner ideal;
  ideal.corner.x = 0;
  EXPECT_EQ(corner_score(ideal.picture, ideal.magnitude, ideal.corner, 4), 0);
}

TEST(CornerScore, EqualsThePlainStepsAlsoInClippedPatches) {
  const cv::Mat1d picture = random_image(30, 40, 1), magnitude = random_image(30, 40, 2);
  std::mt19937 numbers(3);
  const auto uniform = [&](double low, double high) {
    return low + (high - low) * static_cast<double>(numbers()) / 4294967296.0;
  };
  int above_none = 0, checks = 0;
  for (int i = 0; i < 400; ++i) {
    const double a = uniform(0, 7), b = a + uniform(0.6, 2.5);
    const prod_corner corner = {uniform(1, 39), uniform(1, 29), std::cos(a),
                                std::sin(a),    std::cos(b),    std::sin(b)};
    for (const int r : {4, 8, 12}) {
      const double expected = plain_score(picture, magnitude, corner, r);
      if (std::isnan(expected)) continue;  // a quadrant outside
      EXPECT_NEAR(corner_score(picture, magnitude, corner, r), expected, 1e-9);
      if (expected > 0.01) ++above_none;
      ++checks;
    }
  }
  EXPECT_GT(checks, 1000);
  EXPECT_GT(above_none, 50);
}

}  // namespace
}  // namespace ocpan

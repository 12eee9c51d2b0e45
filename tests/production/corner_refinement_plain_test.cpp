#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

#include <Eigen/SVD>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "production/corner_refinement.h"
#include "production/corner_score.h"

namespace ocpan {
namespace {

using Eigen::Matrix2d;
using Eigen::Vector2d;

struct images {
  cv::Mat1d grey, gx, gy, magnitude, angle;
};

images images_of(const cv::Mat1b& picture) {
  images of;
  of.grey = cv::Mat1d(picture);
  cv::Scharr(of.grey, of.gx, CV_64F, 1, 0, 1.0, 0.0, 4);
  cv::Scharr(of.grey, of.gy, CV_64F, 0, 1, 1.0, 0.0, 4);
  cv::cartToPolar(of.gx, of.gy, of.magnitude, of.angle);
  return of;
}

// Directions of the peaks of the smoothed histogram with their values, strongest first.
std::vector<std::pair<double, Vector2d>> plain_peaks(const images& of, double x, double y) {
  double histogram[32] = {}, smooth[32] = {};
  for (int row = 0; row < of.grey.rows; ++row) {
    for (int column = 0; column < of.grey.cols; ++column) {
      if (row < std::trunc(y - 10) || row >= std::trunc(y + 10)) continue;
      if (column < std::trunc(x - 10) || column >= std::trunc(x + 10)) continue;
      const double p = std::fmod(of.angle(row, column) * 32 / std::numbers::pi, 32.0);
      const int b = static_cast<int>(p);
      histogram[b] += of.magnitude(row, column) * (1 - (p - b));
      histogram[(b + 1) % 32] += of.magnitude(row, column) * (p - b);
    }
  }
  for (int i = 0; i < 32; ++i) {
    for (int j = 0; j < 32; ++j) {
      const int d = std::min(std::abs(i - j), 32 - std::abs(i - j));
      smooth[i] += histogram[j] * std::exp(-d * d / 2.0) / std::sqrt(2 * std::numbers::pi);
    }
  }
  std::vector<std::pair<double, Vector2d>> peaks;
  for (int i = 0; i < 32; ++i) {
    if (smooth[(i + 31) % 32] < smooth[i] && smooth[(i + 1) % 32] < smooth[i]) {
      const double t = i * std::numbers::pi / 32;
      peaks.push_back({smooth[i], {std::cos(t), std::sin(t)}});
    }
  }
  std::sort(peaks.begin(), peaks.end(), [](auto& a, auto& b) { return a.first > b.first; });
  return peaks;
}

// Why a candidate is refused, or that it is kept.
enum outcome {
  kept,
  few_peaks,
  weak_peak,
  parallel_peaks,
  parallel_edges,
  outside,
  low_score,
  near
};

outcome plain_refine(std::vector<prod_corner>& corners, const images& of, const cv::Point2d& at) {
  const auto peaks = plain_peaks(of, at.x, at.y);
  if (peaks.size() < 2) return few_peaks;
  if (peaks[1].first * 10 < peaks[0].first) return weak_peak;
  const Vector2d w1 = peaks[0].second, w2 = peaks[1].second;
  if (std::abs(w1.dot(w2)) > 0.85) return parallel_peaks;
  Matrix2d a1 = Matrix2d::Zero(), a2 = a1, g_sum = a1;
  Vector2d b = Vector2d::Zero();
  for (int row = 0; row < of.grey.rows; ++row) {
    for (int column = 0; column < of.grey.cols; ++column) {
      if (row < std::round(at.y - 5) || row >= std::round(at.y + 6)) continue;
      if (column < std::round(at.x - 5) || column >= std::round(at.x + 6)) continue;
      const Vector2d g(of.gx(row, column), of.gy(row, column));
      const double m = of.magnitude(row, column);
      const Matrix2d product = g * g.transpose() / 65025;
      const bool strong = 0.25 * m / 255 > 0.025;
      if (strong && std::abs(g.dot(w1)) / 255 < 0.25 * m / 255) a1 += product;
      if (strong && std::abs(g.dot(w2)) / 255 < 0.25 * m / 255) a2 += product;
      g_sum += product;
      b += product * Vector2d(column, row);
    }
  }
  const Vector2d e1 = Eigen::JacobiSVD<Matrix2d>(a1, Eigen::ComputeFullV).matrixV().col(1);
  const Vector2d e2 = Eigen::JacobiSVD<Matrix2d>(a2, Eigen::ComputeFullV).matrixV().col(1);
  if (std::abs(e1.dot(e2)) > 0.85) return parallel_edges;
  const Vector2d p =
      Eigen::JacobiSVD<Matrix2d>(g_sum, Eigen::ComputeFullU | Eigen::ComputeFullV).solve(b);
  if (p.x() < 0 || p.x() >= of.grey.cols || p.y() < 0 || p.y() >= of.grey.rows) return outside;
  const prod_corner corner = {p.x(), p.y(), e1.x(), e1.y(), e2.x(), e2.y()};
  double score = 0;
  for (const int r : {4, 8, 12}) {
    score = std::max(score, corner_score(of.grey, of.magnitude, corner, r));
  }
  if (score < 5.1000000000000005) return low_score;
  for (const prod_corner& other : corners) {
    const double dx = other.x - p.x(), dy = other.y - p.y();
    if (dx * dx + dy * dy < 16.0) return near;
  }
  corners.push_back(corner);
  return kept;
}

TEST(RefineCorners, EqualThePlainStepsInARandomPicture) {
  std::mt19937 numbers(8);
  int outcomes[8] = {};
  for (const int block : {7, 12, 15}) {
    cv::Mat1b blocks(240 / block, 320 / block), picture;
    for (uchar& value : blocks) value = static_cast<uchar>(numbers() % 2 * 150 + numbers() % 60);
    // Sheared and turned a little, so that edges meet at many angles.
    const cv::Mat1d bend = (cv::Mat1d(2, 3) << block, 0.3 * block, -12, 0.05 * block, block, -9);
    cv::warpAffine(blocks, picture, bend, cv::Size(160, 120), cv::INTER_NEAREST,
                   cv::BORDER_REFLECT_101);
    cv::GaussianBlur(picture, picture, cv::Size(5, 5), 0.8);
    picture.colRange(0, 30) = 60;
    std::vector<cv::Point2d> candidates;
    for (int i = 0; i < 900; ++i) {
      candidates.emplace_back(static_cast<double>(numbers() % 1590) / 10,
                              static_cast<double>(numbers() % 1190) / 10);
    }
    const images of = images_of(picture);
    std::vector<prod_corner> expected;
    for (const cv::Point2d& at : candidates) ++outcomes[plain_refine(expected, of, at)];
    const auto corners = refine_corners(picture, candidates);
    ASSERT_EQ(corners.size(), expected.size()) << block;
    for (std::size_t i = 0; i < corners.size(); ++i) {
      EXPECT_NEAR(corners[i].x, expected[i].x, 1e-9);
      EXPECT_NEAR(corners[i].y, expected[i].y, 1e-9);
      EXPECT_NEAR(corners[i].e1_x, expected[i].e1_x, 1e-9);
      EXPECT_NEAR(corners[i].e1_y, expected[i].e1_y, 1e-9);
      EXPECT_NEAR(corners[i].e2_x, expected[i].e2_x, 1e-9);
      EXPECT_NEAR(corners[i].e2_y, expected[i].e2_y, 1e-9);
    }
  }
  // Each reason to refuse occurs.
  for (int k = 0; k < 8; ++k) EXPECT_GT(outcomes[k], 0) << k;
  EXPECT_GT(outcomes[kept], 30);
}

}  // namespace
}  // namespace ocpan

#include "production/quads.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

#include <Eigen/Core>
#include <gtest/gtest.h>

namespace ocpan {
namespace {

using Eigen::Vector2d;

std::vector<prod_corner> upright(const std::vector<Vector2d>& positions) {
  std::vector<prod_corner> corners;
  for (const Vector2d& p : positions) corners.push_back({p.x(), p.y(), 1, 0, 0, 1});
  return corners;
}

std::vector<prod_quad> upright_quads(const std::vector<Vector2d>& positions) {
  return build_quads(upright(positions));
}

Vector2d position(const prod_corner& corner) { return {corner.x, corner.y}; }

std::pair<int, double> plain_nearest(const std::vector<prod_corner>& corners, int from,
                                     const Vector2d& direction, const std::vector<int>& excluded) {
  std::pair<int, double> best = {-1, std::numeric_limits<double>::max()};
  for (int i = 0; i < static_cast<int>(corners.size()); ++i) {
    if (std::count(excluded.begin(), excluded.end(), i) > 0) continue;
    const Vector2d v = position(corners[static_cast<std::size_t>(i)]) -
                       position(corners[static_cast<std::size_t>(from)]);
    const double t = v.dot(direction);
    if (t < 0) continue;
    const double cost = t + 5.0 * (v - t * direction).norm();
    if (cost < best.second) best = {i, cost};
  }
  return best;
}

// The same with a scan of all corners at every step.
std::vector<prod_quad> plain_quads(const std::vector<prod_corner>& corners) {
  std::vector<prod_quad> quads;
  for (int i = 0; i < static_cast<int>(corners.size()); ++i) {
    const prod_corner& c = corners[static_cast<std::size_t>(i)];
    for (const auto& [sign_a, sign_b] : {std::pair{1, 1}, {-1, 1}, {1, -1}, {-1, -1}}) {
      const Vector2d a = sign_a * Vector2d(c.e1_x, c.e1_y);
      const Vector2d b = sign_b * Vector2d(c.e2_x, c.e2_y);
      const auto [n1, d1] = plain_nearest(corners, i, a, {i});
      if (n1 < 0) continue;
      const auto [n2, d2] = plain_nearest(corners, i, b, {i, n1});
      if (n2 < 0) continue;
      const auto [n3, d3] = plain_nearest(corners, n2, a, {i, n1, n2});
      if (n3 < 0) continue;
      const auto [m, d4] = plain_nearest(corners, n1, b, {i, n1, n2});
      if (m != n3) continue;
      if (std::abs(d1 - d3) > 0.3 * (d1 + d3) || std::abs(d2 - d4) > 0.3 * (d2 + d4)) continue;
      const auto at = [&](int k) { return position(corners[static_cast<std::size_t>(k)]); };
      const Vector2d u = at(i) - at(n3), w = at(n1) - at(n2);
      if (u.dot(w) * u.dot(w) > 0.5625 * u.squaredNorm() * w.squaredNorm()) continue;
      double area = 0;
      const int path[5] = {i, n2, n3, n1, i};
      for (int k = 0; k < 4; ++k) {
        area += (at(path[k]).y() + at(path[k + 1]).y()) * (at(path[k + 1]).x() - at(path[k]).x());
      }
      prod_quad quad = {i, n2, n3, n1};
      if (area >= 0) quad = {i, n1, n3, n2};
      while (quad[0] != *std::min_element(quad.begin(), quad.end())) {
        std::rotate(quad.begin(), quad.begin() + 1, quad.end());
      }
      if (std::count(quads.begin(), quads.end(), quad) == 0) quads.push_back(quad);
    }
  }
  return quads;
}

TEST(BuildQuads, JoinFourCornersClockwiseFromTheSmallestIndex) {
  EXPECT_EQ(upright_quads({{0, 0}, {10, 0}, {10, 10}, {0, 10}}),
            (std::vector<prod_quad>{{0, 1, 2, 3}}));
  EXPECT_EQ(upright_quads({{10, 10}, {0, 0}, {10, 0}, {0, 10}}),
            (std::vector<prod_quad>{{0, 3, 1, 2}}));
}

TEST(BuildQuads, GiveEachCellOnceInTheOrderInWhichTheyAreFound) {
  // 0 1 2
  // 3 4 5
  // 6 7 8, reached from corner 0, 1, 3 and 4 first.
  std::vector<Vector2d> positions;
  for (int k = 0; k < 9; ++k) positions.emplace_back(20 * (k % 3), 20 * (k / 3));
  EXPECT_EQ(upright_quads(positions),
            (std::vector<prod_quad>{{0, 1, 4, 3}, {1, 2, 5, 4}, {3, 4, 7, 6}, {4, 5, 8, 7}}));
}

TEST(BuildQuads, UseTheDirectionsOfTheFirstCornerAllTheWay) {
  // Only corner 2 has directions along the sides; it is enough.
  auto corners = upright({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
  for (const std::size_t k : {0u, 1u, 3u}) {
    corners[k].e1_x = corners[k].e2_y = std::sqrt(0.5);
    corners[k].e1_y = corners[k].e2_x = std::sqrt(0.5);
  }
  EXPECT_EQ(build_quads(corners), (std::vector<prod_quad>{{0, 1, 2, 3}}));
}

TEST(BuildQuads, NeedACornerOnEachSide) {
  EXPECT_TRUE(upright_quads({}).empty());
  EXPECT_TRUE(upright_quads({{0, 0}}).empty());
  EXPECT_TRUE(upright_quads({{0, 0}, {10, 0}}).empty());
  EXPECT_TRUE(upright_quads({{0, 0}, {10, 0}, {0, 10}}).empty());
}

// Corners of which only the first has directions; the others lead nowhere.
std::vector<prod_corner> one_upright(const std::vector<Vector2d>& positions) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  auto corners = upright(positions);
  for (std::size_t k = 1; k < corners.size(); ++k) {
    corners[k] = {corners[k].x, corners[k].y, none, none, none, none};
  }
  return corners;
}

TEST(BuildQuads, NeedAWayRoundThatCloses) {
  EXPECT_EQ(build_quads(one_upright({{0, 0}, {10, 0.1}, {0.1, 10}, {11, 10}})).size(), 1u);
  // From corner 2 the next one is 3 as before, from corner 1 it is 4.
  EXPECT_TRUE(build_quads(one_upright({{0, 0}, {10, 0.1}, {0.1, 10}, {11, 10}, {10, 13}})).empty());
}

TEST(BuildQuads, AcceptOppositeSidesThatDifferByThreeTenthsOfTheirSum) {
  // The side of 7 and one of 13 differ by 6, which is 0.3 times 20.
  const auto quads_with = [](double far_side) {
    return build_quads(
               one_upright({{0, 0}, {7, 0}, {3.5 - far_side / 2, 10}, {3.5 + far_side / 2, 10}}))
        .size();
  };
  EXPECT_EQ(quads_with(7), 1u);
  EXPECT_EQ(quads_with(13), 1u);
  EXPECT_EQ(quads_with(13.01), 0u);
}

TEST(BuildQuads, CompareTheOtherPairOfSidesToo) {
  const auto quads_with = [](double far_side) {
    return build_quads(
               one_upright({{0, 0}, {10, 3.5 - far_side / 2}, {0, 7}, {10, 3.5 + far_side / 2}}))
        .size();
  };
  EXPECT_EQ(quads_with(7), 1u);
  EXPECT_EQ(quads_with(13), 1u);
  EXPECT_EQ(quads_with(13.01), 0u);
}

TEST(BuildQuads, RefuseDiagonalsThatRunAlike) {
  // The diagonals of a 30 by 10 cell have a cosine of 0.8, of a 25 by 10 one 0.724.
  EXPECT_TRUE(upright_quads({{0, 0}, {30, 0}, {30, 10}, {0, 10}}).empty());
  EXPECT_EQ(upright_quads({{0, 0}, {25, 0}, {25, 10}, {0, 10}}).size(), 1u);
}

TEST(BuildQuads, CountNoAreaAsClockwise) {
  // Corners 1 and 2 coincide, so the diagonal between them has no length: a way without
  // area. Found from corner 0 and, the other way round, from corner 3.
  EXPECT_EQ(upright_quads({{0, 0}, {10, 10}, {10, 10}, {20, 20}}),
            (std::vector<prod_quad>{{0, 1, 3, 2}, {0, 2, 3, 1}}));
}

TEST(BuildQuads, EqualThePlainScanOnABentGrid) {
  std::mt19937 numbers(4);
  const auto uniform = [&](double most) {
    return most * (static_cast<double>(numbers()) / 2147483648.0 - 1);
  };
  std::size_t found = 0;
  for (const double disorder : {0.0, 2.0, 5.0, 9.0}) {
    std::vector<prod_corner> corners;
    for (int k = 0; k < 400; ++k) {
      const double x = 25.0 * (k % 20), y = 25.0 * (k / 20);
      const double bend = 0.001 * x + uniform(0.05);
      const int sign = numbers() % 2 == 0 ? 1 : -1;
      if (numbers() % 12 == 0) continue;
      corners.push_back({x + 0.0005 * y * y + uniform(disorder), y + uniform(disorder),
                         sign * std::cos(bend), sign * std::sin(bend), -std::sin(bend),
                         std::cos(bend)});
    }
    std::shuffle(corners.begin(), corners.end(), numbers);
    const auto quads = build_quads(corners);
    EXPECT_EQ(quads, plain_quads(corners)) << disorder;
    found += quads.size();
  }
  EXPECT_GT(found, 700u);
}

}  // namespace
}  // namespace ocpan

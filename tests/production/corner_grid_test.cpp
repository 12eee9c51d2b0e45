#include "production/corner_grid.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

std::vector<prod_corner> corners_at(const std::vector<Eigen::Vector2d>& positions) {
  std::vector<prod_corner> corners;
  for (const Eigen::Vector2d& p : positions) corners.push_back({p.x(), p.y(), 1, 0, 0, 1});
  return corners;
}

nearest_corner nearest(const std::vector<Eigen::Vector2d>& positions,
                       const Eigen::Vector2d& position, const Eigen::Vector2d& direction,
                       const std::vector<std::int32_t>& excluded = {}) {
  return corner_grid(corners_at(positions)).nearest_along(position, direction, excluded);
}

nearest_corner plain_nearest(const std::vector<prod_corner>& corners,
                             const Eigen::Vector2d& position, const Eigen::Vector2d& direction,
                             const std::vector<std::int32_t>& excluded) {
  nearest_corner best = {-1, std::numeric_limits<double>::max()};
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const auto index = static_cast<std::int32_t>(i);
    bool left_out = false;
    for (const std::int32_t e : excluded) left_out = left_out || e == index;
    const Eigen::Vector2d v = Eigen::Vector2d(corners[i].x, corners[i].y) - position;
    const double t = v.dot(direction);
    if (left_out || t < 0) continue;
    const double cost = t + 5.0 * (v - t * direction).norm();
    if (cost < best.cost) best = {index, cost};
  }
  return best;
}

TEST(NearestAlong, CountsADistanceAsideFiveTimes) {
  // 12 ahead costs 12, 3 ahead and 2 aside cost 13.
  const nearest_corner found = nearest({{3, 2}, {12, 0}}, {0, 0}, {1, 0});
  EXPECT_EQ(found.index, 1);
  EXPECT_EQ(found.cost, 12);
  EXPECT_EQ(nearest({{3, 2}, {14, 0}}, {0, 0}, {1, 0}).cost, 13);
}

TEST(NearestAlong, LeavesOutWhatLiesBehindButNotWhatLiesBeside) {
  EXPECT_EQ(nearest({{-0.001, 0}, {30, 0}}, {0, 0}, {1, 0}).index, 1);
  EXPECT_EQ(nearest({{0, 2}, {30, 0}}, {0, 0}, {1, 0}).index, 0);
  EXPECT_EQ(nearest({{0, 2}, {30, 0}}, {0, 0}, {1, 0}).cost, 10);
}

TEST(NearestAlong, LeavesOutTheExcluded) {
  EXPECT_EQ(nearest({{1, 0}, {2, 0}, {3, 0}}, {0, 0}, {1, 0}, {0, 1}).index, 2);
}

TEST(NearestAlong, TakesTheLowestIndexOfATie) {
  EXPECT_EQ(nearest({{9, 0}, {5, 3}, {5, -3}, {20, 0}, {5, 3}}, {0, 0}, {1, 0}, {0}).index, 1);
  EXPECT_EQ(nearest({{9, 0}, {5, 3}, {5, -3}, {20, 0}, {5, 3}}, {0, 0}, {1, 0}, {0, 1}).index, 2);
  EXPECT_EQ(nearest({{50, 0}, {0, 10}}, {0, 0}, {1, 0}).index, 0);  // far apart
}

TEST(NearestAlong, FindsNoneWhereThereIsNone) {
  for (const auto& positions : {std::vector<Eigen::Vector2d>{}, {{-1, 0}, {-9, 4}}}) {
    const nearest_corner found = nearest(positions, {0, 0}, {1, 0});
    EXPECT_EQ(found.index, -1);
    EXPECT_EQ(found.cost, std::numeric_limits<double>::max());
  }
}

TEST(NearestAlong, EqualsThePlainScan) {
  std::mt19937 numbers(11);
  const auto up_to = [&](unsigned limit) { return static_cast<double>(numbers() % limit); };
  int checks = 0, found = 0;
  for (const unsigned corner_count : {1u, 2u, 7u, 60u, 500u}) {
    for (const unsigned spread : {1u, 12u, 900u}) {  // many of them tie or coincide
      std::vector<prod_corner> corners;
      for (unsigned i = 0; i < corner_count; ++i) {
        corners.push_back({up_to(spread), up_to(spread / 2 + 1), 1, 0, 0, 1});
      }
      const corner_grid grid(corners);
      for (int i = 0; i < 300; ++i) {
        const double angle = i % 3 == 0 ? std::acos(-1.0) / 2 * up_to(4) : up_to(6283) / 1000;
        const Eigen::Vector2d direction =
            i % 4 == 0 ? Eigen::Vector2d(0, -1) : Eigen::Vector2d(std::cos(angle), std::sin(angle));
        const Eigen::Vector2d position(up_to(spread + 40) - 20, up_to(spread + 40) - 20);
        const std::vector<std::int32_t> excluded = {
            static_cast<std::int32_t>(numbers() % corner_count), -1};
        const nearest_corner expected = plain_nearest(corners, position, direction, excluded);
        const nearest_corner actual = grid.nearest_along(position, direction, excluded);
        ASSERT_EQ(actual.index, expected.index) << corner_count << ' ' << spread << ' ' << i;
        ASSERT_EQ(actual.cost, expected.cost);
        found += expected.index >= 0;
        ++checks;
      }
    }
  }
  EXPECT_EQ(checks, 5 * 3 * 300);
  EXPECT_GT(found, 2000);
}

}  // namespace
}  // namespace ocpan

#include "tables/sphere_polygon.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

using vertices = std::vector<Eigen::Vector2d>;

TEST(RemoveRepeats, KeepsAVertexThatDiffersFromTheOneBefore) {
  EXPECT_EQ(remove_repeats({{0, 0}, {0, 0}, {1, 0}, {1, 2}, {1, 2}, {0, 0}}),
            (vertices{{0, 0}, {1, 0}, {1, 2}, {0, 0}}));
}

TEST(SubdivideTo128, HullOf128VerticesPassesUnchanged) {
  vertices hull;
  for (int i = 0; i < 128; ++i) hull.emplace_back(i, i * i);
  const Eigen::MatrixX2d polygon = subdivide_to_128(hull);
  ASSERT_EQ(polygon.rows(), 128);
  for (int i = 0; i < 128; ++i) EXPECT_EQ(polygon.row(i), Eigen::RowVector2d(i, i * i));
}

// Vertices to and fro between two points 1 apart, from (0, 0).
vertices zigzag(std::size_t count) {
  vertices hull(count, Eigen::Vector2d(0, 0));
  for (std::size_t i = 1; i < count; i += 2) hull[i].x() = 1;
  return hull;
}

TEST(SubdivideTo128, HalvesTheLongestEdgeOneAfterTheOther) {
  // 125 vertices in one place and one 8 away: the edge to it is as long as the closing one,
  // which is halved first; then the edge to it is the longest.
  vertices hull(126, Eigen::Vector2d(0, 0));
  hull.back() = {8, 0};
  const Eigen::MatrixX2d polygon = subdivide_to_128(hull);
  EXPECT_EQ(polygon.row(124), Eigen::RowVector2d(0, 0));
  EXPECT_EQ(polygon.row(125), Eigen::RowVector2d(4, 0));
  EXPECT_EQ(polygon.row(126), Eigen::RowVector2d(8, 0));
  EXPECT_EQ(polygon.row(127), Eigen::RowVector2d(4, 0));
}

TEST(SubdivideTo128, HalvesEachSideOfASquareAlike) {
  const Eigen::MatrixX2d polygon = subdivide_to_128({{0, 4}, {0, 0}, {4, 0}, {4, 4}});
  for (int i = 0; i < 32; ++i) {
    EXPECT_EQ(polygon.row(i), Eigen::RowVector2d(0, 4 - i * 0.125));
    EXPECT_EQ(polygon.row(96 + i), Eigen::RowVector2d(4 - i * 0.125, 4));
  }
}

TEST(SubdivideTo128, ClosingEdgeWinsATieAndItsMidpointBecomesTheLastVertex) {
  // A last vertex at (1, 0) makes the closing edge 1 long like all the others.
  vertices hull = zigzag(126);
  hull.insert(hull.begin() + 60, hull[60]);  // an edge of length 0, so that 127 are odd
  const Eigen::MatrixX2d polygon = subdivide_to_128(hull);
  EXPECT_EQ(polygon.row(1), Eigen::RowVector2d(1, 0));
  EXPECT_EQ(polygon.row(127), Eigen::RowVector2d(0.5, 0));
}

TEST(SubdivideTo128, EarlierEdgeWinsATieWithALaterOne) {
  // The closing edge is 0 long; of the edges of 1 the first is halved.
  const Eigen::MatrixX2d polygon = subdivide_to_128(zigzag(127));
  EXPECT_EQ(polygon.row(1), Eigen::RowVector2d(0.5, 0));
  EXPECT_EQ(polygon.row(127), Eigen::RowVector2d(0, 0));
}

TEST(SubdivideTo128, TwoVerticesMakeAPolygonToo) {
  const Eigen::MatrixX2d polygon = subdivide_to_128({{0, 0}, {64, 0}});
  EXPECT_EQ(polygon.row(0), Eigen::RowVector2d(0, 0));
  EXPECT_EQ(polygon.row(64), Eigen::RowVector2d(64, 0));
  EXPECT_EQ(polygon.row(127), Eigen::RowVector2d(1, 0));
}

TEST(ExpandOnSphere, MovesSquareToTheNeighboursByASixteenth) {
  // Around +z, from +x over +y: p x (before - after) points away from z at every vertex.
  Eigen::MatrixX3d p(4, 3);
  const double s = 0.6, c = 0.8;
  p << s, 0, c, 0, s, c, -s, 0, c, 0, -s, c;
  const Eigen::MatrixX3d got = expand_on_sphere(p);
  // At p[0] the tangent is (0, -1, 0), and the normal p x T = (c, 0, -s).
  const double x = s + 0.0625 * c, z = c - 0.0625 * s, length = std::hypot(x, z);
  EXPECT_NEAR(got(0, 0), x / length, 1e-15);
  EXPECT_NEAR(got(0, 1), 0, 1e-15);
  EXPECT_NEAR(got(0, 2), z / length, 1e-15);
  EXPECT_NEAR(got(3, 1), -x / length, 1e-15);
}

TEST(ExpandOnSphere, ReversedTurningShrinks) {
  Eigen::MatrixX3d p(4, 3);
  p << 0.6, 0, 0.8, 0, -0.6, 0.8, -0.6, 0, 0.8, 0, 0.6, 0.8;
  EXPECT_GT(expand_on_sphere(p)(0, 2), 0.8);
}

TEST(ToQ24, RoundsHalfAwayFromZero) {
  EXPECT_EQ(to_q24(1.0), 16777216);
  EXPECT_EQ(to_q24(-1.0), -16777216);
  EXPECT_EQ(to_q24(0.5 / 16777216), 1);
  EXPECT_EQ(to_q24(-0.5 / 16777216), -1);
  EXPECT_EQ(to_q24(0.49 / 16777216), 0);
  EXPECT_EQ(to_q24(-0.49 / 16777216), 0);
  EXPECT_EQ(to_q24(0.0), 0);
}

TEST(ToQ24, IsDefinedForEveryNumber) {
  EXPECT_EQ(to_q24(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(to_q24(1e300), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(to_q24(-std::numeric_limits<double>::infinity()),
            -std::numeric_limits<std::int32_t>::max());
}

}  // namespace
}  // namespace ocpan

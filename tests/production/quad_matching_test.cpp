#include "production/quad_matching.h"

#include <cmath>
#include <limits>
#include <queue>
#include <random>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "model/parameters.h"
#include "model/pose.h"

namespace ocpan {
namespace {

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

Eigen::Vector3d direction(double azimuth, double elevation) {
  return {std::cos(elevation) * std::cos(azimuth), std::cos(elevation) * std::sin(azimuth),
          std::sin(elevation)};
}

// A sheet of cells of a sphere of radius 1000, with corner (c, r) at c * 4 + r, and its
// quads, counterclockwise as seen from outside.
struct sheet {
  sphere_points points;
  std::vector<prod_quad> quads;
};

sheet make_sheet(int columns, double cell, std::mt19937& generator, double jitter = 0) {
  std::uniform_real_distribution<double> shift(-jitter, jitter);
  sheet made{sphere_points(3, columns * 4), {}};
  for (int c = 0; c < columns; ++c) {
    for (int r = 0; r < 4; ++r) {
      made.points.col(c * 4 + r) =
          1000 * direction(c * cell + shift(generator), (r - 1.5) * cell + shift(generator));
    }
  }
  for (int c = 0; c + 1 < columns; ++c) {
    for (int r = 0; r + 1 < 4; ++r) {
      const int k = c * 4 + r;
      made.quads.push_back({k, k + 4, k + 5, k + 1});
    }
  }
  return made;
}

// The comparison as it is defined, one rotation and corner after the other.
quad_comparison plain_distance(const prod_quad& q, const prod_quad& s, const sphere_points& in_q,
                               const sphere_points& in_s) {
  quad_comparison best{s, not_a_number};
  for (std::size_t r = 0; r < 4; ++r) {
    double worst = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      const auto tilt = [&](std::size_t edge) {
        const Eigen::Vector3d from = in_s.col(s[edge]);
        const Eigen::Vector3d to = in_s.col(s[(edge + 1) % 4]);
        const Eigen::Vector3d n = from.cross(to) / from.cross(to).norm();
        const Eigen::Vector3d u = in_q.col(q[k]) / in_q.col(q[k]).norm();
        return (pi / 2 - std::acos(n.dot(u))) / std::acos(from.dot(to) / (from.norm() * to.norm()));
      };
      const double e = tilt((r + k + 3) % 4) + tilt((r + k) % 4);
      if (std::isnan(e) || std::isnan(worst)) {
        worst = not_a_number;
      } else {
        worst = std::max(worst, e);
      }
    }
    if (!std::isnan(worst) && !(best.distance <= worst)) {
      best.distance = worst;
      for (std::size_t k = 0; k < 4; ++k) best.second[k] = s[(r + k) % 4];
    }
  }
  return best;
}

double median_of_squares(const std::vector<double>& lengths) {
  std::priority_queue<double> lower;
  std::priority_queue<double, std::vector<double>, std::greater<>> upper;
  for (const double length : lengths) {
    if (lower.empty() || length * length <= lower.top()) {
      lower.push(length * length);
    } else {
      upper.push(length * length);
    }
    if (lower.size() > upper.size() + 1) {
      upper.push(lower.top());
      lower.pop();
    } else if (upper.size() > lower.size() + 1) {
      lower.push(upper.top());
      upper.pop();
    }
  }
  if (lower.size() == upper.size()) return std::sqrt((lower.top() + upper.top()) / 2);
  return std::sqrt(lower.size() > upper.size() ? lower.top() : upper.top());
}

TEST(QuadScale, RootsTheMedianOfTheSquares) {
  // Sides 1, 2, 1, 2: the squares' median is 2.5, its root isn't the 1.5 of the lengths.
  sphere_points points(3, 4);
  points << 0, 1, 1, 0, 0, 0, 2, 2, 0, 0, 0, 0;
  EXPECT_DOUBLE_EQ(quad_scale({{{}, {{0, 1, 2, 3}}}}, {points}), std::sqrt(2.5));
  EXPECT_DOUBLE_EQ(quad_scale({{{{0, 1, 2, 3}}, {}}}, {points}), std::sqrt(2.5));
}

TEST(QuadScale, CountsEveryQuadOfEveryCamera) {
  std::mt19937 generator(3);
  const sheet small = make_sheet(4, 0.05, generator, 0.01);
  const sheet large = make_sheet(5, 0.08, generator, 0.01);
  std::vector<double> lengths;
  for (const sheet* of : {&small, &large}) {
    for (const prod_quad& quad : of->quads) {
      for (std::size_t k = 0; k < 4; ++k) {
        lengths.push_back((of->points.col(quad[k]) - of->points.col(quad[(k + 1) % 4])).norm());
      }
    }
  }
  ASSERT_EQ(lengths.size(), 84u);
  const quad_lists split{{large.quads.begin(), large.quads.begin() + 4},
                         {large.quads.begin() + 4, large.quads.end()}};
  EXPECT_NEAR(quad_scale({{small.quads, {}}, split}, {small.points, large.points}),
              median_of_squares(lengths), 1e-9);
}

TEST(QuadScale, IsNotANumberWithoutAQuad) {
  EXPECT_TRUE(std::isnan(quad_scale({{}, {}}, {sphere_points(3, 0), sphere_points(3, 0)})));
}

TEST(QuadScale, LeavesOutEdgesThatAreNoNumbers) {
  // Sides 1, 3, 1, 3 and of the second quad one 1 and one 3, whichever corner is broken: the
  // squares' median is 5. Taken for large or for small, edges to nowhere make it 9 or 1.
  for (Eigen::Index broken = 4; broken < 8; ++broken) {
    sphere_points points(3, 8);
    points << 0, 1, 1, 0, 0, 1, 1, 0,  //
        0, 0, 3, 3, 0, 0, 3, 3,        //
        0, 0, 0, 0, 0, 0, 0, 0;
    points(2, broken) = not_a_number;
    const prod_quad whole = {0, 1, 2, 3};
    const prod_quad half = {4, 5, 6, 7};
    EXPECT_DOUBLE_EQ(quad_scale({{{}, {whole, half}}}, {points}), std::sqrt(5)) << broken;
    EXPECT_DOUBLE_EQ(quad_scale({{{}, {half, whole}}}, {points}), std::sqrt(5)) << broken;
  }
}

TEST(QuadDistance, IsZeroForTheSameQuadHoweverItStarts) {
  std::mt19937 generator(1);
  const sheet cells = make_sheet(4, 0.1, generator);
  const prod_quad quad = cells.quads[4];
  for (std::size_t first = 0; first < 4; ++first) {
    const prod_quad other = {quad[first], quad[(first + 1) % 4], quad[(first + 2) % 4],
                             quad[(first + 3) % 4]};
    const quad_comparison found = quad_distance(quad, other, cells.points, cells.points);
    EXPECT_EQ(found.second, quad) << first;
    EXPECT_NEAR(found.distance, 0, 1e-6) << first;
  }
}

TEST(QuadDistance, CountsAShiftInSides) {
  // Shifted by 0.3 of a side along the equator, two of Q's corners stand 0.3 sides inside
  // their own edges of S and the other two as far outside.
  std::mt19937 generator(1);
  const sheet cells = make_sheet(2, 0.02, generator);
  sheet shifted = cells;
  shifted.points = rotation_from_vector({0, 0, 0.3 * 0.02}) * cells.points;
  const prod_quad middle = cells.quads[1];  // symmetrical to the equator
  const quad_comparison found = quad_distance(middle, middle, shifted.points, cells.points);
  EXPECT_EQ(found.second, middle);
  EXPECT_NEAR(found.distance, 0.3, 0.001);
}

TEST(QuadDistance, TakesTheEdgesFromTheSecondQuadOnly) {
  // A quad of half the size lies a quarter of a side inside both edges at each corner. The
  // other way round the corners lie outside, which counts as nothing.
  sphere_points points(3, 8);
  for (int k = 0; k < 4; ++k) {
    const double azimuth = (k == 0 || k == 3 ? -1 : 1) * 0.01;
    const double elevation = (k < 2 ? -1 : 1) * 0.01;
    points.col(k) = direction(azimuth, elevation);
    points.col(k + 4) = direction(azimuth / 2, elevation / 2);
  }
  const prod_quad large = {0, 1, 2, 3};
  const prod_quad small = {4, 5, 6, 7};
  EXPECT_NEAR(quad_distance(small, large, points, points).distance, 0.5, 0.001);
  EXPECT_EQ(quad_distance(large, small, points, points).distance, 0);
}

TEST(QuadDistance, TakesTheEarliestRotationOnATie) {
  // Run the other way round, all corners of the small quad count as outside, whichever
  // corner is laid on which: all four rotations give 0.
  sphere_points points(3, 8);
  for (int k = 0; k < 4; ++k) {
    const double azimuth = (k < 2 ? -1 : 1) * 0.01;
    const double elevation = (k == 0 || k == 3 ? -1 : 1) * 0.01;
    points.col(k) = direction(azimuth, elevation);
    points.col(k + 4) = direction(azimuth / 8, elevation / 8);
  }
  const prod_quad large = {2, 3, 0, 1};
  const quad_comparison found = quad_distance({4, 5, 6, 7}, large, points, points);
  EXPECT_EQ(found.distance, 0);
  EXPECT_EQ(found.second, large);
}

TEST(QuadDistance, AgreesWithAPlainComparison) {
  std::mt19937 generator(5);
  const sheet first = make_sheet(5, 0.07, generator, 0.02);
  const sheet second = make_sheet(5, 0.08, generator, 0.02);
  int compared = 0;
  for (const prod_quad& q : first.quads) {
    for (const prod_quad& s : second.quads) {
      const quad_comparison expected = plain_distance(q, s, first.points, second.points);
      const quad_comparison found = quad_distance(q, s, first.points, second.points);
      EXPECT_NEAR(found.distance, expected.distance, 1e-12);
      EXPECT_EQ(found.second, expected.second);
      ++compared;
    }
  }
  EXPECT_EQ(compared, 144);
}

TEST(QuadDistance, IsNotANumberForACornerThatIsNone) {
  std::mt19937 generator(1);
  const sheet cells = make_sheet(2, 0.1, generator);
  for (std::size_t k = 0; k < 4; ++k) {
    sheet broken = cells;
    broken.points(1, cells.quads[0][k]) = not_a_number;
    const prod_quad quad = cells.quads[0];
    EXPECT_TRUE(std::isnan(quad_distance(quad, quad, broken.points, cells.points).distance)) << k;
    EXPECT_TRUE(std::isnan(quad_distance(quad, quad, cells.points, broken.points).distance)) << k;
  }
}

TEST(MatchQuads, FindsTheSameAsComparingAll) {
  // Half of the second quads stand opposite on the sphere, where some match too.
  std::mt19937 generator(8);
  const sheet first = make_sheet(20, 0.06, generator, 0.012);
  sheet second = make_sheet(20, 0.07, generator, 0.012);
  second.points.rightCols(40) *= -1;
  std::vector<quad_match> expected;
  int opposite = 0;
  for (const prod_quad& q : first.quads) {
    for (const prod_quad& s : second.quads) {
      const quad_comparison found = plain_distance(q, s, first.points, second.points);
      if (!(found.distance < 1.2)) continue;
      expected.push_back({q, found.second});
      opposite += first.points.col(q[0]).dot(second.points.col(s[0])) < 0;
    }
  }
  const auto matches = match_quads(first.quads, second.quads, first.points, second.points);
  ASSERT_EQ(matches.size(), expected.size());
  for (std::size_t k = 0; k < matches.size(); ++k) {
    EXPECT_EQ(matches[k].first, expected[k].first) << k;
    EXPECT_EQ(matches[k].second, expected[k].second) << k;
  }
  EXPECT_GT(opposite, 10);
  EXPECT_GT(expected.size(), 100u);
  EXPECT_LT(expected.size(), first.quads.size() * second.quads.size() / 4);
}

TEST(MatchQuads, LetsAQuadMatchSeveralOthers) {
  std::mt19937 generator(1);
  const sheet cells = make_sheet(4, 0.1, generator);
  const auto matches = match_quads({cells.quads[4]}, cells.quads, cells.points, cells.points);
  EXPECT_GT(matches.size(), 1u);
}

TEST(MatchQuads, FindsNothingInAnEmptyList) {
  std::mt19937 generator(1);
  const sheet cells = make_sheet(3, 0.1, generator);
  EXPECT_TRUE(match_quads({}, cells.quads, cells.points, cells.points).empty());
  EXPECT_TRUE(match_quads(cells.quads, {}, cells.points, cells.points).empty());
}

TEST(MatchQuads, LeavesOutDegenerateQuadsAndCornersThatAreNoNumbers) {
  std::mt19937 generator(1);
  const sheet cells = make_sheet(2, 0.1, generator);
  const prod_quad quad = cells.quads[1];
  const prod_quad flat = {quad[0], quad[0], quad[2], quad[3]};
  EXPECT_TRUE(match_quads({quad}, {flat}, cells.points, cells.points).empty());
  sheet broken = cells;
  broken.points.col(quad[2]).setConstant(not_a_number);
  EXPECT_TRUE(match_quads({quad}, {quad}, broken.points, cells.points).empty());
  EXPECT_TRUE(match_quads({quad}, {quad}, cells.points, broken.points).empty());
  EXPECT_EQ(match_quads({quad}, {quad}, cells.points, cells.points).size(), 1u);
}

TEST(CornerPairs, ListsEachPairOnceWhereItFirstComes) {
  const corner_index_lists pairs =
      corner_pairs({{{1, 2, 3, 4}, {9, 8, 7, 6}}, {{2, 5, 3, 1}, {8, 5, 3, 9}}});
  EXPECT_EQ(pairs.first, (std::vector<std::int32_t>{1, 2, 3, 4, 5, 3}));
  EXPECT_EQ(pairs.second, (std::vector<std::int32_t>{9, 8, 7, 6, 5, 3}));
}

TEST(CornerPairs, AreNoneWithoutAMatch) {
  EXPECT_TRUE(corner_pairs({}).first.empty());
  EXPECT_TRUE(corner_pairs({}).second.empty());
}

TEST(SelectPoints, CopiesColumnsInListOrder) {
  sphere_points points(3, 3);
  points << 1, 2, 3, 4, 5, 6, 7, 8, 9;
  sphere_points expected(3, 2);
  expected << 3, 1, 6, 4, 9, 7;
  EXPECT_EQ(select_points(points, {2, 0}), expected);
  EXPECT_EQ(select_points(points, {}).cols(), 0);
}

TEST(CameraGraph, JoinsCamerasOfTwoCornerPairsBothWays) {
  const camera_graph graph = build_camera_graph({{{0, 1}, {{1, 2}, {3, 4}}},
                                                 {{0, 2}, {{1}, {3}}},
                                                 {{1, 2}, {{}, {}}},
                                                 {{1, 3}, {{1, 2, 3}, {1, 2, 3}}}});
  EXPECT_EQ(graph, (camera_graph{{0, {1}}, {1, {0, 3}}, {3, {1}}}));
}

sphere_points on_x_axis(std::initializer_list<double> places) {
  sphere_points points = sphere_points::Zero(3, static_cast<Eigen::Index>(places.size()));
  Eigen::Index k = 0;
  for (const double x : places) points(0, k++) = x;
  return points;
}

TEST(MatchNearest, SortsByDistance) {
  const auto found = match_nearest(on_x_axis({0, 10, 20}), on_x_axis({20.5, 0.25, 9}), 3);
  EXPECT_EQ(found.first, (std::vector<std::int32_t>{0, 2, 1}));
  EXPECT_EQ(found.second, (std::vector<std::int32_t>{1, 0, 2}));
}

TEST(MatchNearest, TakesOnlyPointsStrictlyWithinTheRadius) {
  const auto found = match_nearest(on_x_axis({0}), on_x_axis({3, 2.75, -3}), 3);
  EXPECT_EQ(found.first, (std::vector<std::int32_t>{0}));
  EXPECT_EQ(found.second, (std::vector<std::int32_t>{1}));
}

TEST(MatchNearest, TakesTheLowestIndexOnATie) {
  const auto found = match_nearest(on_x_axis({4, 0, 4}), on_x_axis({2}), 3);
  EXPECT_EQ(found.first, (std::vector<std::int32_t>{0}));
}

TEST(MatchNearest, KeepsTheListOrderOfEqualDistances) {
  const auto found = match_nearest(on_x_axis({0, 10}), on_x_axis({11, -1, 9, 1, 0}), 3);
  EXPECT_EQ(found.second, (std::vector<std::int32_t>{4, 0, 1, 2, 3}));
  EXPECT_EQ(found.first, (std::vector<std::int32_t>{0, 1, 0, 1, 0}));
}

TEST(MatchNearest, LetsPointsShareTheirNearest) {
  const auto found = match_nearest(on_x_axis({0}), on_x_axis({1, 2}), 3);
  EXPECT_EQ(found.first, (std::vector<std::int32_t>{0, 0}));
}

TEST(MatchNearest, FindsNothingAmongNothing) {
  EXPECT_TRUE(match_nearest(sphere_points(3, 0), on_x_axis({1}), 3).first.empty());
  EXPECT_TRUE(match_nearest(on_x_axis({1}), sphere_points(3, 0), 3).first.empty());
}

TEST(MatchNearest, PassesOverWhatIsNoNumber) {
  const auto found = match_nearest(on_x_axis({not_a_number, 5}), on_x_axis({4, not_a_number}), 3);
  EXPECT_EQ(found.first, (std::vector<std::int32_t>{1}));
  EXPECT_EQ(found.second, (std::vector<std::int32_t>{0}));
  EXPECT_TRUE(match_nearest(on_x_axis({0}), on_x_axis({0}), not_a_number).first.empty());
}

}  // namespace
}  // namespace ocpan

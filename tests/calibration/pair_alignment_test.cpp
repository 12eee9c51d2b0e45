#include "calibration/pair_alignment.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "model/pose.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;

Matrix3Xd random_points(int count, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> at(-100, 100);
  Matrix3Xd points(3, count);
  for (Eigen::Index i = 0; i < points.size(); ++i) points.data()[i] = at(random);
  return points;
}

TEST(PairAlignment, MapsTheSecondCamerasFrameToTheFirsts) {
  const Matrix3d r = rotation_from_vector({0.3, -0.8, 0.5});
  point_lists lists;
  lists.list0 = {random_points(20, 1), random_points(7, 2)};
  for (const Matrix3Xd& p : lists.list0) {
    lists.list1.push_back((r * p).colwise() + Vector3d(5, -3, 8));
  }
  EXPECT_LT((pair_alignment(lists).rotation - r).norm(), 1e-12);
}

TEST(PairAlignment, BoundsTheWeightOfAPerfectFit) {
  point_lists lists;
  lists.list0 = {random_points(20, 1), random_points(7, 2)};
  lists.list1 = lists.list0;
  EXPECT_DOUBLE_EQ(pair_alignment(lists).weight, std::sqrt(27 / 0.001));
}

TEST(PairAlignment, WeighsByPointsOverSquaredResiduals) {
  // Four points about their centroid; along z one pair is pulled 1 apart from the other's,
  // which no rotation mends: e = (0, 0, +-0.5) each.
  Matrix3Xd p(3, 4), q(3, 4);
  p << 10, -10, 0, 0,  //
      0, 0, 10, -10,   //
      0, 0, 0, 0;
  q = p;
  q.row(2) << 0.5, 0.5, -0.5, -0.5;
  const weighted_rotation got = pair_alignment({{p}, {q}});
  EXPECT_LT((got.rotation - Matrix3d::Identity()).norm(), 1e-12);
  EXPECT_NEAR(got.weight, std::sqrt(4 / 1.0), 1e-12);
}

TEST(Joined, StandsMatricesSideBySide) {
  const Matrix3Xd a = random_points(2, 1), b = random_points(3, 2);
  const Matrix3Xd all = joined({a, b});
  ASSERT_EQ(all.cols(), 5);
  EXPECT_EQ(all.leftCols(2), a);
  EXPECT_EQ(all.rightCols(3), b);
  EXPECT_EQ(joined({}).cols(), 0);
}

}  // namespace
}  // namespace ocpan

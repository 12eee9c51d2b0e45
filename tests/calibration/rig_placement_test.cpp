#include "calibration/rig_placement.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <Eigen/QR>
#include <gtest/gtest.h>

#include "model/pose.h"
#include "model/rigid_rotation.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;

// Cameras with known rotation and position in the frame of camera 0, and the points that
// some pairs of them saw.
struct placed_rig {
  std::vector<Matrix3d> rotations = {Matrix3d::Identity(), rotation_from_vector({0.1, 0.9, -0.2}),
                                     rotation_from_vector({-0.4, 1.9, 0.3}),
                                     rotation_from_vector({0.2, -1.1, 0.1})};
  std::vector<Vector3d> positions = {Vector3d::Zero(), {60, 5, -8}, {20, -40, 70}, {-50, 3, 9}};

  // Camera c's view of a point of the rig's frame.
  Matrix3Xd in_camera(std::size_t c, const Matrix3Xd& points) const {
    return rotations[c].transpose() * (points.colwise() - positions[c]);
  }
  pair_points see(const std::vector<camera_pair>& pairs, double noise = 0) const {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> at(-200, 200);
    std::normal_distribution<double> error(0, 1);
    pair_points seen;
    for (const auto& [a, b] : pairs) {
      for (int shot = 0; shot < 3; ++shot) {
        Matrix3Xd points(3, 10);
        for (Eigen::Index i = 0; i < points.size(); ++i) points.data()[i] = at(random);
        Matrix3Xd first = in_camera(a, points), second = in_camera(b, points);
        for (Eigen::Index i = 0; i < first.size(); ++i) first.data()[i] += noise * error(random);
        seen[{a, b}].list1.push_back(first);
        seen[{a, b}].list0.push_back(second);
      }
    }
    return seen;
  }
};

rig four_cameras() { return rig(4, initial_model({900, 700, 80, 0})); }

void expect_placed(const rig& placed, const placed_rig& truth, double tolerance) {
  const model_map start = initial_model({900, 700, 80, 0});
  for (std::size_t c = 0; c < 4; ++c) {
    EXPECT_LT((vector_of(placed[c], C_0) - truth.positions[c]).norm(), 300 * tolerance) << c;
    EXPECT_LT((vector_of(placed[c], H_0) - truth.rotations[c] * vector_of(start, H_0)).norm(),
              1000 * tolerance)
        << c;
    EXPECT_LT(
        (direction_from_angles(placed[c].at(A_th), placed[c].at(A_ph)) + truth.rotations[c].col(2))
            .norm(),
        tolerance)
        << c;
  }
}

TEST(PlaceCameras, FindsAChainFromExactPoints) {
  const placed_rig truth;
  expect_placed(place_cameras(four_cameras(), truth.see({{0, 1}, {1, 2}, {2, 3}})), truth, 1e-10);
}

TEST(PlaceCameras, FindsARingFromExactPoints) {
  const placed_rig truth;
  expect_placed(place_cameras(four_cameras(), truth.see({{0, 1}, {1, 2}, {2, 3}, {0, 3}})), truth,
                1e-10);
}

TEST(PlaceCameras, AveragesNoise) {
  const placed_rig truth;
  expect_placed(
      place_cameras(four_cameras(), truth.see({{0, 1}, {0, 2}, {1, 2}, {2, 3}, {0, 3}}, 0.05)),
      truth, 1e-3);
}

TEST(PlaceCameras, LeavesCameraZeroAlone) {
  const placed_rig truth;
  const rig before = four_cameras();
  EXPECT_EQ(place_cameras(before, truth.see({{0, 1}, {1, 2}, {2, 3}}))[0], before[0]);
}

TEST(PlaceCameras, KeepsTheRotationOfACameraThatNothingLinks) {
  const placed_rig truth;
  const rig before = four_cameras();
  const rig placed = place_cameras(before, truth.see({{0, 1}, {1, 2}}));
  EXPECT_EQ(placed[3], before[3]);
  EXPECT_LT((vector_of(placed[2], C_0) - truth.positions[2]).norm(), 1e-8);
}

TEST(PlaceCameras, SolvesARigThatFallsApartWithTheLeastNorm) {
  // 2 and 3 see each other but nothing ties them to 0: positions as close to 0 as may be,
  // half the baseline each, in the frame of camera 2 that stays unturned.
  const placed_rig truth;
  const rig placed = place_cameras(four_cameras(), truth.see({{0, 1}, {2, 3}}));
  const Vector3d p2 = vector_of(placed[2], C_0), p3 = vector_of(placed[3], C_0);
  EXPECT_LT((p2 + p3).norm(), 1e-8);
  EXPECT_GT(p2.norm(), 1);
}

TEST(PlaceCameras, WithoutAnyPairChangesNothing) {
  const rig before = four_cameras();
  EXPECT_EQ(place_cameras(before, {}), before);
  EXPECT_EQ(place_cameras({before[0]}, {}), rig{before[0]});
}

TEST(PlaceCameras, WeighsPositionsByThePairsAloneAndTurnsByTheirPathsToo) {
  const placed_rig truth;
  const pair_points points = truth.see({{0, 1}, {0, 2}, {1, 2}, {0, 3}}, 30.0);
  const rotation_table pairs = align_pairs(points);
  const rotation_table paths = refine_pairs(pairs, 4);
  const std::vector<Matrix3d> rotations = rotations_to_first(paths, 4);
  const std::vector<Vector3d> expected = camera_positions(points, pairs, rotations);
  const rig placed = place_cameras(four_cameras(), points);
  for (std::size_t c = 0; c < 4; ++c) {
    EXPECT_LT((vector_of(placed[c], C_0) - expected[c]).norm(), 1e-9) << c;
  }
  EXPECT_GT((camera_positions(points, paths, rotations)[1] - expected[1]).norm(), 0.01);
}

TEST(PlaceCameras, PointsThatAreNoNumbersPlaceTheOtherCamerasNowhere) {
  const placed_rig truth;
  for (const double broken : {std::nan(""), HUGE_VAL}) {
    pair_points points = truth.see({{0, 1}, {1, 2}, {2, 3}});
    points[{1, 2}].list0[0](1, 4) = broken;
    std::vector<Vector3d> positions =
        camera_positions(points, align_pairs(truth.see({{0, 1}, {1, 2}, {2, 3}})), truth.rotations);
    EXPECT_EQ(positions[0], Vector3d::Zero());
    for (std::size_t c = 1; c < 4; ++c) EXPECT_TRUE(positions[c].array().isNaN().all()) << c;
    const rig placed = place_cameras(four_cameras(), points);
    EXPECT_EQ(placed[0], four_cameras()[0]);
    EXPECT_TRUE(std::isnan(placed[1].at(C_0)));
  }
}

TEST(RefinePairs, WithTwoCamerasKeepsThePairAsItStands) {
  rotation_table table;
  table[{0, 1}] = {rotation_from_vector({0.3, 0.2, 0.1}), 7};
  const rotation_table refined = refine_pairs(table, 2);
  ASSERT_EQ(refined.size(), 1u);
  EXPECT_LT((refined.at({0, 1}).rotation - table.at({0, 1}).rotation).norm(), 1e-14);
  EXPECT_EQ(refined.at({0, 1}).weight, 7);
  EXPECT_LT((rotations_to_first(refined, 2)[1] - table.at({0, 1}).rotation).norm(), 1e-14);
}

TEST(RefinePairs, FindsAPairThatSharesNoBoardThroughThirdCameras) {
  const placed_rig truth;
  const rotation_table table = align_pairs(truth.see({{0, 1}, {1, 2}}));
  const rotation_table refined = refine_pairs(table, 3);
  const Matrix3d expected = truth.rotations[0].transpose() * truth.rotations[2];
  EXPECT_LT((refined.at({0, 2}).rotation - expected).norm(), 1e-10);
  // sqrt(w_01 w_12), both those of 30 exact points
  EXPECT_NEAR(refined.at({0, 2}).weight, std::sqrt(30 / 0.001), 1e-6);
}

TEST(RefinePairs, AddsTheWeightsOfAllPaths) {
  rotation_table table;
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = i + 1; j < 4; ++j) table[{i, j}].weight = 1.0 + static_cast<double>(i + j);
  }
  // 1-2 directly 4; over 0: sqrt(2 * 3); over 3: sqrt(5 * 6).
  EXPECT_NEAR(refine_pairs(table, 4).at({1, 2}).weight, 4 + std::sqrt(6.0) + std::sqrt(30.0),
              1e-12);
}

TEST(RefinePairs, ReadsTheFirstTableOnly) {
  // Refining in place would carry (0,1) with its new weight into (0,2).
  rotation_table table;
  table[{0, 1}] = {rotation_from_vector({0.5, 0, 0}), 1};
  table[{0, 2}] = {rotation_from_vector({0, 0.5, 0}), 1};
  table[{1, 2}] = {rotation_from_vector({0, 0, 0.5}), 1};
  const rotation_table refined = refine_pairs(table, 3);
  EXPECT_EQ(refined.at({0, 1}).weight, 2);
  EXPECT_EQ(refined.at({0, 2}).weight, 2);
  EXPECT_EQ(refined.at({1, 2}).weight, 2);
}

// A pair's entry as it stands in the table, from its higher camera's frame to its lower's;
// the identity with weight 0 if there is none.
weighted_rotation entry_of(const rotation_table& table, std::size_t a, std::size_t b) {
  const auto found = table.find({std::min(a, b), std::max(a, b)});
  return found == table.end() ? weighted_rotation{} : found->second;
}

// Pairs whose rotations contradict one another, with a weight each. (1, 3) is missing.
rotation_table contradicting_pairs() {
  rotation_table table;
  table[{0, 1}] = {rotation_from_vector({0.5, 0.1, -0.3}), 2};
  table[{0, 2}] = {rotation_from_vector({-0.2, 0.9, 0.4}), 3};
  table[{0, 3}] = {rotation_from_vector({0.1, -0.4, 0.6}), 0.5};
  table[{1, 2}] = {rotation_from_vector({0.3, 0.2, 0.8}), 7};
  table[{2, 3}] = {rotation_from_vector({-0.6, -0.1, 0.2}), 5};
  return table;
}

TEST(RefinePairs, WeighsEachPathByTheMeanOfItsParts) {
  const rotation_table table = contradicting_pairs();
  const rotation_table refined = refine_pairs(table, 4);
  ASSERT_EQ(refined.size(), 6u);
  for (const auto& [pair, got] : refined) {
    const auto [i, j] = pair;
    const weighted_rotation direct = entry_of(table, i, j);
    Matrix3d sum = direct.weight * direct.rotation;
    for (std::size_t k = 0; k < 4; ++k) {
      if (k == i || k == j) continue;
      const weighted_rotation ki = entry_of(table, k, i), kj = entry_of(table, k, j);
      Matrix3d i_from_k = ki.rotation, k_from_j = kj.rotation;
      if (k < i) i_from_k.transposeInPlace();
      if (k > j) k_from_j.transposeInPlace();
      sum += std::sqrt(ki.weight * kj.weight) * i_from_k * k_from_j;
    }
    EXPECT_LT((got.rotation - closest_rotation(sum)).norm(), 1e-12) << i << j;
  }
}

TEST(RotationsToFirst, WeighEachPathByTheMeanOfItsParts) {
  const rotation_table table = contradicting_pairs();
  const std::vector<Matrix3d> rotations = rotations_to_first(table, 4);
  ASSERT_EQ(rotations.size(), 4u);
  EXPECT_EQ(rotations[0], Matrix3d::Identity());
  for (std::size_t j = 1; j < 4; ++j) {
    const weighted_rotation direct = entry_of(table, 0, j);
    Matrix3d sum = direct.weight * direct.rotation;
    for (std::size_t k = 1; k < 4; ++k) {
      if (k == j) continue;
      const weighted_rotation to_first = entry_of(table, 0, k), kj = entry_of(table, k, j);
      const Matrix3d k_from_j = j < k ? kj.rotation.transpose() : kj.rotation;
      sum += std::sqrt(to_first.weight * kj.weight) * to_first.rotation * k_from_j;
    }
    EXPECT_LT((rotations[j] - closest_rotation(sum)).norm(), 1e-12) << j;
  }
}

TEST(CameraPositions, WeighEachPointByItsPair) {
  // Three pairs whose baselines contradict one another, as 1, 2 and 3 matrices of 10 points.
  const placed_rig truth;
  pair_points points = truth.see({{0, 1}, {0, 2}, {1, 2}}, 5.0);
  points[{0, 1}].list0.resize(1);
  points[{0, 1}].list1.resize(1);
  points[{0, 2}].list0.resize(2);
  points[{0, 2}].list1.resize(2);
  rotation_table table;
  table[{0, 1}].weight = 1;
  table[{0, 2}].weight = 9;
  table[{1, 2}].weight = 4;
  std::vector<Matrix3d> rotations = truth.rotations;
  rotations.resize(3);
  const std::vector<Vector3d> positions = camera_positions(points, table, rotations);

  // The least sum of weight |R_a p_a + t_a - R_b p_b - t_b|^2, a row per point.
  Eigen::MatrixXd rows = Eigen::MatrixXd::Zero(60, 2);
  Eigen::MatrixXd sides = Eigen::MatrixXd::Zero(60, 3);
  Eigen::Index row = 0;
  for (const auto& [pair, lists] : points) {
    const auto [a, b] = pair;
    const double root = std::sqrt(table.at(pair).weight);
    for (std::size_t m = 0; m < lists.list0.size(); ++m) {
      for (Eigen::Index k = 0; k < 10; ++k, ++row) {
        if (a != 0) rows(row, static_cast<Eigen::Index>(a) - 1) = root;
        rows(row, static_cast<Eigen::Index>(b) - 1) = -root;
        sides.row(row) =
            root * (rotations[b] * lists.list0[m].col(k) - rotations[a] * lists.list1[m].col(k))
                       .transpose();
      }
    }
  }
  ASSERT_EQ(row, 60);
  const Eigen::MatrixXd expected = rows.colPivHouseholderQr().solve(sides);
  ASSERT_EQ(positions.size(), 3u);
  EXPECT_EQ(positions[0], Vector3d::Zero());
  EXPECT_LT((positions[1] - expected.row(0).transpose()).norm(), 1e-9);
  EXPECT_LT((positions[2] - expected.row(1).transpose()).norm(), 1e-9);
}

}  // namespace
}  // namespace ocpan

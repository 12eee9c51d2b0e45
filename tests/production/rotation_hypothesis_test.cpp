#include "production/rotation_hypothesis.h"

#include <limits>

#include <gtest/gtest.h>

#include "model/rigid_rotation.h"
#include "production/production_codes.h"
#include "tests/production/search_scene.h"

namespace ocpan {
namespace {

using testing::make_search_scene;
using testing::search_scene;

search_scene two_cameras() { return make_search_scene({{0, 0, 0}, {0.02, -0.03, 0.01}}, {{0, 1}}); }

double plain_inliers(const search_scene& scene, const std::vector<Eigen::Matrix3d>& rotations) {
  double inliers = 0;
  for (const camera_pair& pair : scene.pairs) {
    const point_lists& points = scene.pair_points.at(pair);
    for (Eigen::Index k = 0; k < points.first.cols(); ++k) {
      const Eigen::Vector3d a = points.first.col(k);
      const Eigen::Vector3d b = points.second.col(k);
      inliers += (rotations[pair.first] * a - rotations[pair.second] * b).squaredNorm() <
                 scene.scale * 0.0625 * scene.scale;
    }
  }
  return inliers;
}

double plain_error(const search_scene& scene, const std::vector<Eigen::Matrix3d>& rotations) {
  double sum = 0;
  double count = 0;
  for (std::size_t c = 0; c < scene.points.size(); ++c) {
    for (Eigen::Index k = 0; k < scene.points[c].cols(); ++k) {
      const Eigen::Vector3d p = scene.points[c].col(k);
      sum += (rotations[c] * p - p).squaredNorm() / (scene.scale * scene.scale);
      ++count;
    }
  }
  return sum / count;
}

Eigen::Matrix3d rotation_of(const search_scene& scene, const camera_pair& pair,
                            const std::vector<quad_match>& matches) {
  Eigen::Matrix3d sum = Eigen::Matrix3d::Zero();
  for (const quad_match& match : matches) {
    for (std::size_t k = 0; k < 4; ++k) {
      sum += scene.points[pair.first].col(match.first[k]) *
             scene.points[pair.second].col(match.second[k]).transpose();
    }
  }
  return closest_rotation(sum);
}

TEST(RandomIndex, ReducesThe31UpperBitsByRemainder) {
  std::mt19937 generator(11);
  std::mt19937 plain(11);
  for (const std::size_t count : {1u, 2u, 3u, 7u, 1000u}) {
    EXPECT_EQ(random_index(generator, count), plain() / 2 % count);
  }
}

TEST(TryHypothesis, FindsTheTurnOfASecondCamera) {
  const search_scene scene = two_cameras();
  std::mt19937 generator(1);
  const hypothesis guess = try_hypothesis(generator, scene.inputs());
  EXPECT_EQ(guess.status, 0);
  ASSERT_EQ(guess.rotations.size(), 2u);
  EXPECT_EQ(guess.rotations[0], Eigen::Matrix3d::Identity());
  EXPECT_TRUE(guess.rotations[1].isApprox(scene.truth[1], 1e-12));
  EXPECT_EQ(guess.inliers, 12);
  EXPECT_NEAR(guess.error, plain_error(scene, scene.truth), 1e-12);
}

TEST(TryHypothesis, ChainsCamerasWhicheverIsTheLowerOne) {
  // 0 - 3 - 1 - 2: camera 1 hangs on the higher 3, camera 2 on the lower 1.
  const search_scene scene =
      make_search_scene({{0, 0, 0}, {0.02, -0.03, 0.01}, {-0.01, 0.01, 0.02}, {0.03, 0.02, -0.02}},
                        {{0, 3}, {1, 2}, {1, 3}});
  std::mt19937 generator(1);
  const hypothesis guess = try_hypothesis(generator, scene.inputs());
  EXPECT_EQ(guess.inliers, 36);
  for (std::size_t c = 0; c < 4; ++c) {
    EXPECT_TRUE(guess.rotations[c].isApprox(scene.truth[c], 1e-12)) << c;
  }
}

TEST(TryHypothesis, CountsInliersAndErrorAsDefined) {
  // With noise of the size of the inlier limit some corner pairs are in and some out; more
  // pairs than one block holds.
  search_scene scene = make_search_scene({{0, 0, 0}, {0.02, -0.03, 0.01}, {0.01, 0.01, 0.01}},
                                         {{0, 1}, {0, 2}, {1, 2}});
  std::mt19937 noise(4);
  std::normal_distribution<double> shift(0, 0.1 * scene.scale);
  for (sphere_points& points : scene.points) {
    for (double& coordinate : points.reshaped()) coordinate += shift(noise);
  }
  for (const camera_pair& pair : scene.pairs) {
    auto& matches = scene.matches[pair];
    for (int first = 0; first < 19; ++first) {
      for (int second = 0; second < 19; ++second) {
        matches.push_back({{first, first + 1, first + 2, first + 3},
                           {second, second + 1, second + 2, second + 3}});
      }
    }
  }
  scene.renew();
  ASSERT_GT(scene.corners.begin()->second.first.size(), 256u);
  std::mt19937 generator(2);
  int nonzero = 0;
  for (int trial = 0; trial < 50; ++trial) {
    const hypothesis guess = try_hypothesis(generator, scene.inputs());
    const double expected = plain_inliers(scene, guess.rotations);
    EXPECT_EQ(guess.inliers, expected);
    const double error = plain_error(scene, guess.rotations);
    EXPECT_NEAR(guess.error, error, 1e-12 * error);
    nonzero += expected > 0;
  }
  EXPECT_GT(nonzero, 5);
}

TEST(TryHypothesis, CountsAnInlierStrictlyWithinAQuarterCell) {
  // One more pair whose distance is exactly a quarter of the scale, and one just nearer.
  for (const double distance : {15.0, 14.99}) {
    search_scene scene = two_cameras();
    scene.truth[1].setIdentity();
    scene.points[1] = scene.points[0];
    const point_lists extra{Eigen::Vector3d(1000, 0, 0), Eigen::Vector3d(1000, 0, distance)};
    scene.pair_points.begin()->second = extra;
    std::mt19937 generator(1);
    // The drawn rotation is the identity but for rounding, so the exact limit is set by hand.
    search_inputs inputs = scene.inputs();
    inputs.scale = distance == 15.0 ? 60 * (1 - 1e-9) : 60;
    EXPECT_EQ(try_hypothesis(generator, inputs).inliers, distance == 15.0 ? 0 : 1) << distance;
  }
}

TEST(TryHypothesis, DrawsCameraBaseAndTwoDifferentPositions) {
  const search_scene scene = two_cameras();
  const auto& matches = scene.matches.begin()->second;
  search_scene noisy = scene;
  for (Eigen::Index k = 0; k < 12; ++k) noisy.points[1](k % 3, k) += static_cast<double>(k);
  std::mt19937 generator(9);
  std::mt19937 plain(9);
  for (int trial = 0; trial < 20; ++trial) {
    const hypothesis guess = try_hypothesis(generator, noisy.inputs());
    plain.discard(2);  // the only camera, the only base
    std::size_t first = 0;
    std::size_t second = 0;
    do {
      first = (plain() >> 1) % matches.size();
      do {
        second = (plain() >> 1) % matches.size();
      } while (second == first);
    } while (matches[first].first == matches[second].first);
    EXPECT_EQ(guess.rotations[1], rotation_of(noisy, {0, 1}, {matches[first], matches[second]}));
    EXPECT_EQ(generator, plain) << trial;
  }
}

TEST(TryHypothesis, DrawsAgainWhileTheMatchesShareAQuadOnEitherSide) {
  // Of three matches the first two share their first quad, the last two their second.
  search_scene scene = two_cameras();
  auto& matches = scene.matches.begin()->second;
  matches = {{matches[0].first, matches[0].second},
             {matches[0].first, matches[1].second},
             {matches[2].first, matches[1].second}};
  scene.renew();
  const Eigen::Matrix3d only = rotation_of(scene, {0, 1}, {matches[0], matches[2]});
  std::mt19937 generator(2);
  for (int trial = 0; trial < 20; ++trial) {
    EXPECT_TRUE(try_hypothesis(generator, scene.inputs()).rotations[1].isApprox(only, 1e-12));
  }
}

TEST(TryHypothesis, GivesUpAfter1001DrawsOfMatchesThatShareAQuad) {
  search_scene scene = two_cameras();
  auto& matches = scene.matches.begin()->second;
  matches = {{matches[0].first, matches[0].second}, {matches[0].first, matches[1].second}};
  scene.renew();
  std::mt19937 generator(6);
  std::mt19937 plain(6);
  const hypothesis guess = try_hypothesis(generator, scene.inputs());
  plain.discard(2);
  for (int draw = 0; draw < 1001; ++draw) {
    const std::size_t first = (plain() >> 1) % 2;
    while ((plain() >> 1) % 2 == first) {
    }
  }
  EXPECT_EQ(generator, plain);
  EXPECT_EQ(guess.status, 0);
  EXPECT_EQ(guess.inliers, 0);
  EXPECT_TRUE(guess.rotations[1].isApprox(rotation_of(scene, {0, 1}, matches), 1e-12));
  EXPECT_NEAR(guess.error, plain_error(scene, guess.rotations), 1e-12);
}

TEST(TryHypothesis, MarksASingleMatchAtOnceAndStillTurnsByIt) {
  search_scene scene = two_cameras();
  auto& matches = scene.matches.begin()->second;
  matches.resize(1);
  scene.renew();
  std::mt19937 generator(6);
  std::mt19937 plain(6);
  const hypothesis guess = try_hypothesis(generator, scene.inputs());
  plain.discard(2);
  EXPECT_EQ(generator, plain);
  EXPECT_EQ(guess.inliers, 0);
  EXPECT_TRUE(guess.rotations[1].isApprox(rotation_of(scene, {0, 1}, matches), 1e-12));
  EXPECT_NEAR(guess.error, plain_error(scene, guess.rotations), 1e-12);
}

TEST(TryHypothesis, OnePairWithoutADrawLeavesTheWholeGuessWithoutInliers) {
  search_scene scene = make_search_scene({{0, 0, 0}, {0.01, 0, 0}, {0, 0.01, 0}}, {{0, 1}, {1, 2}});
  scene.matches[{0, 1}].resize(1);  // the first of two that are drawn
  scene.renew();
  std::mt19937 generator(6);
  const hypothesis guess = try_hypothesis(generator, scene.inputs());
  EXPECT_EQ(guess.inliers, 0);
  EXPECT_GT(plain_inliers(scene, guess.rotations), 0);
}

TEST(TryHypothesis, ReportsACameraOutOfReach) {
  search_scene scene = make_search_scene({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, {{0, 1}});
  std::mt19937 generator(6);
  EXPECT_EQ(try_hypothesis(generator, scene.inputs()).status, fixture_unusable);
  scene.graph.clear();
  EXPECT_EQ(try_hypothesis(generator, scene.inputs()).status, fixture_unusable);
}

TEST(TryHypothesis, PassesOnWhatIsNoNumber) {
  search_scene scene = two_cameras();
  scene.points[1](0, 0) = std::numeric_limits<double>::quiet_NaN();
  std::mt19937 generator(6);
  const hypothesis guess = try_hypothesis(generator, scene.inputs());
  EXPECT_EQ(guess.status, 0);
  EXPECT_TRUE(std::isnan(guess.error));
}

}  // namespace
}  // namespace ocpan

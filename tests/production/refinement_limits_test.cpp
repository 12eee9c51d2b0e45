// When the refinement ends, and that it keeps every feature, told by data on which other
// limits would end elsewhere.

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/production/refinement_scene.h"

namespace ocpan {
namespace {

using testing::solve_by_hand;

constexpr solve_settings settled{24, false, 1e-5, 1e-7, 50, true};

// The second camera turned by half a degree, its picture scaled and shifted.
rig start_rig() {
  rig models = testing::true_rig();
  models[1] = rotate_model(models[1], rotation_from_vector({0.004, -0.006, 0.003}));
  models[1][H_0] *= 1.001;
  models[1][V_2] += 0.5;
  return models;
}

// Some of the features, evenly chosen, seen a little beside where they are.
std::vector<pair_measurement> noisy_features(std::size_t count, double noise, unsigned seed) {
  const pair_measurement all = testing::true_measurement(testing::true_rig());
  pair_measurement some{all.cameras, all.board_points, {}, {}};
  std::mt19937 generator(seed);
  const auto random = [&] { return noise * (static_cast<double>(generator() % 2001) / 1000 - 1); };
  for (std::size_t k = 0; k < count; ++k) {
    some.shots.push_back(all.shots[k * all.shots.size() / count]);
    some.poses.push_back(all.poses[k * all.shots.size() / count]);
    some.poses.back().translation *= 1.002;
    for (Eigen::Matrix2Xd& seen : some.shots.back()) {
      seen(0, 0) += random();
      seen(1, 0) += random();
    }
  }
  return {some};
}

// The same, but some of them seen far beside by the second camera.
std::vector<pair_measurement> with_outliers(std::vector<pair_measurement> groups,
                                            std::size_t outliers) {
  for (std::size_t k = 1; k <= outliers; ++k) {
    const std::size_t shot = groups[0].shots.size() / 10 * k;
    groups[0].shots[shot][1](0, 0) += 30 + 10 * static_cast<double>(k);
  }
  return groups;
}

bool same(const rig& one, const rig& other) {
  bool all = one.size() == other.size();
  for (std::size_t c = 0; all && c < one.size(); ++c) {
    all = std::equal(one[c].begin(), one[c].end(), other[c].begin(), other[c].end());
  }
  return all;
}

// Refines as the solver does with the settled limits, and counts where others tell.
class RefinementLimits : public ::testing::Test {
 protected:
  void expect_settled(const std::vector<pair_measurement>& groups) {
    const rig start = start_rig();
    rig refined;
    std::vector<pair_measurement> unread;
    refine_rig(refined, unread, start, groups, testing::radius, testing::tolerances);
    EXPECT_TRUE(same(refined, solve_by_hand(groups, start, settled)));
    for (std::size_t k = 0; k < others_.size(); ++k) {
      told_[k] += !same(refined, solve_by_hand(groups, start, others_[k]));
    }
  }
  void expect_all_told() const {
    for (std::size_t k = 0; k < others_.size(); ++k) EXPECT_GT(told_[k], 0) << k;
  }

  std::vector<solve_settings> others_;
  std::vector<int> told_ = std::vector<int>(2, 0);
};

TEST_F(RefinementLimits, RejectNoFeature) {
  others_ = {settled};
  others_[0].reject = true;
  expect_settled(with_outliers(noisy_features(45, 0.2, 1), 1));
  EXPECT_EQ(told_[0], 1);
}

TEST_F(RefinementLimits, EndAfterFiftySteps) {
  others_ = {settled, settled};
  others_[0].max_iterations = 49;
  others_[1].max_iterations = 51;
  for (const unsigned seed : {1u, 3u}) {
    expect_settled(with_outliers(noisy_features(45, 2, seed), 8));
  }
  expect_all_told();
}

TEST_F(RefinementLimits, EndWhereTheCostChangesByLess) {
  // A dozen features cost so little that the relative limit is the smaller one.
  others_ = {settled, settled};
  others_[0].abs_tol = 1e-6;
  others_[1].abs_tol = 1e-4;
  for (const unsigned seed : {2u, 5u, 6u, 9u}) expect_settled(noisy_features(12, 2, seed));
  expect_all_told();
}

TEST_F(RefinementLimits, EndWhereTheCostChangesByASmallerPart) {
  others_ = {settled, settled};
  others_[0].rel_tol = 1e-8;
  others_[1].rel_tol = 1e-6;
  expect_settled(noisy_features(60, 0.2, 1));
  for (const unsigned seed : {1u, 3u}) expect_settled(noisy_features(45, 2, seed));
  expect_all_told();
}

}  // namespace
}  // namespace ocpan

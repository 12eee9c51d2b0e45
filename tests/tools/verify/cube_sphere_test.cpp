#include "tools/verify/cube_sphere.h"

#include <cmath>
#include <set>

#include <gtest/gtest.h>

#include "tools/verify/overlaps.h"

namespace ocpan {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double degree = pi / 180;

class CubeSphere : public ::testing::TestWithParam<int> {
 protected:
  const std::vector<cube_sample> samples = samples_on_faces(GetParam());
};

TEST_P(CubeSphere, SolidAnglesAreThoseOfThePartsOfASphere) {
  double upper = 0, cap = 0;
  const Eigen::Vector3d towards = Eigen::Vector3d(1, 2, -3).normalized();
  for (const cube_sample& sample : samples) {
    if (sample.direction.y() > 0) upper += sample.solid_angle;
    if (sample.direction.y() == 0) upper += sample.solid_angle / 2;
    if (sample.direction.dot(towards) > std::cos(50 * degree)) cap += sample.solid_angle;
  }
  EXPECT_EQ(samples.size(), 6u * static_cast<std::size_t>(GetParam() * GetParam()));
  EXPECT_NEAR(upper, 2 * pi, 0.03);
  EXPECT_NEAR(cap, 2 * pi * (1 - std::cos(50 * degree)), 0.01);
}

TEST_P(CubeSphere, NeighboursAreNearAlsoBeyondAnEdge) {
  const cube_places places(samples, GetParam());
  const double step = 2.0 / (GetParam() - 1);
  std::size_t beyond = 0, checked = 0;
  for (std::size_t i = 0; i < samples.size(); i += 7) {
    for (const std::size_t next : places.next_to(i)) {
      ASSERT_LT((samples[i].direction - samples[next].direction).norm(), 1.01 * step);
      if (samples[i].face != samples[next].face) {
        ASSERT_LT((samples[i].direction - samples[next].direction).norm(), 1e-15);
        ++beyond;
      }
      ++checked;
    }
  }
  EXPECT_GT(checked, samples.size() / 2);
  EXPECT_GT(beyond, 100u);
}

TEST_P(CubeSphere, HasNoSeamForAHole) {
  // Two cameras whose pictures show all and who cover all but a cap around a cube's corner
  // and another one across an edge.
  const Eigen::Vector3d corner = Eigen::Vector3d(1, 1, -1).normalized();
  const Eigen::Vector3d edge = Eigen::Vector3d(-1, -1, 0).normalized();
  camera_reach reach;
  reach.seen.assign(samples.size(), 1);
  for (const cube_sample& sample : samples) {
    reach.weight.push_back(sample.direction.dot(corner) < std::cos(10 * degree) &&
                           sample.direction.dot(edge) < std::cos(5 * degree));
  }
  const sphere_coverage coverage =
      coverage_of(samples, cube_places(samples, GetParam()), {reach, reach});
  ASSERT_EQ(coverage.holes.size(), 2u);
  EXPECT_NEAR(coverage.holes[0].solid_angle, 2 * pi * (1 - std::cos(10 * degree)), 0.003);
  EXPECT_NEAR(coverage.holes[0].middle.yaw, 45, 0.2);
  EXPECT_NEAR(coverage.holes[0].middle.pitch, std::asin(1 / std::sqrt(3)) / degree, 0.2);
  EXPECT_NEAR(coverage.holes[1].middle.yaw, -90, 0.2);
  EXPECT_NEAR(coverage.holes[1].middle.pitch, -45, 0.2);
  EXPECT_EQ(coverage.holes[0].seen_by, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(coverage.unseen, 0);
}

TEST_P(CubeSphere, WhatNoPictureShowsIsNoHole) {
  camera_reach reach;
  for (const cube_sample& sample : samples) {
    reach.weight.push_back(sample.direction.z() < -0.5);
    reach.seen.push_back(sample.direction.z() < -0.5);
  }
  const sphere_coverage coverage = coverage_of(samples, cube_places(samples, GetParam()), {reach});
  EXPECT_TRUE(coverage.holes.empty());
  EXPECT_NEAR(coverage.unseen, 3 * pi, 0.03);
  EXPECT_NEAR(coverage.of_cameras[0], pi, 0.03);
}

// A camera that covers what lies within so many degrees of longitude of a yaw, and 60 degrees
// up and down.
camera_reach slice(const std::vector<cube_sample>& samples, double yaw, double half_width) {
  camera_reach reach;
  for (const cube_sample& sample : samples) {
    const look_angles at = look_angles_of(sample.direction);
    const double off = std::abs(std::remainder(at.yaw - yaw, 360));
    reach.weight.push_back(off < half_width && std::abs(at.pitch) < 60);
  }
  reach.seen = reach.weight;
  return reach;
}

TEST_P(CubeSphere, OverlapsOfARingAreThoseOfItsNeighbours) {
  const std::vector<camera_overlap> overlaps =
      overlaps_of(samples, {slice(samples, 0, 50), slice(samples, 90, 50), slice(samples, 180, 50),
                            slice(samples, -90, 44)});
  ASSERT_EQ(overlaps.size(), 4u);
  std::set<std::pair<std::size_t, std::size_t>> pairs;
  for (const camera_overlap& overlap : overlaps) pairs.insert({overlap.first, overlap.second});
  EXPECT_EQ(pairs, (std::set<std::pair<std::size_t, std::size_t>>{{0, 1}, {0, 3}, {1, 2}, {2, 3}}));
  // Ten degrees of longitude: at most ten on the sphere, and half of that at the ends.
  EXPECT_NEAR(overlaps[0].solid_angle, 10 * degree * 2 * std::sin(60 * degree), 0.02);
  EXPECT_GT(overlaps[0].width_degrees, 7);
  EXPECT_LT(overlaps[0].width_degrees, 10.5);
  EXPECT_NEAR(overlaps[1].width_degrees, 4 * overlaps[0].width_degrees / 10, 0.8);
}

TEST_P(CubeSphere, NeighboursWithAGapOverlapByNothing) {
  const std::vector<camera_overlap> overlaps =
      overlaps_of(samples, {slice(samples, 0, 30), slice(samples, 70, 30)});
  ASSERT_EQ(overlaps.size(), 1u);
  EXPECT_EQ(overlaps[0].solid_angle, 0);
  EXPECT_EQ(overlaps[0].width_degrees, 0);
}

INSTANTIATE_TEST_SUITE_P(BothFaces, CubeSphere, ::testing::Values(129, 253));

}  // namespace
}  // namespace ocpan

#include "tools/verify/polygon_check.h"

#include <cmath>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double degree = pi / 180;

// A circle around -z, clockwise as seen from the rig: from above to the right.
device_polygon circle(double radius_degrees) {
  device_polygon polygon;
  const double radius = radius_degrees * degree;
  for (int i = 0; i < 128; ++i) {
    const double turn = 2 * pi * i / 128;
    polygon.emplace_back(std::sin(radius) * std::sin(turn), std::sin(radius) * std::cos(turn),
                         -std::cos(radius));
  }
  return polygon;
}

camera_reach cap(const std::vector<cube_sample>& samples, double radius_degrees) {
  camera_reach reach;
  for (const cube_sample& sample : samples) {
    reach.weight.push_back(-sample.direction.z() > std::cos(radius_degrees * degree));
  }
  return reach;
}

class PolygonCheck : public ::testing::Test {
 protected:
  const std::vector<cube_sample> samples = samples_on_faces(129);
};

TEST_F(PolygonCheck, AWiderCircleEnclosesACap) {
  for (const double radius : {20.0, 85.0, 110.0}) {
    const polygon_comparison got =
        compare_polygon(circle(radius + 3), samples, cap(samples, radius));
    EXPECT_TRUE(got.is_outline);
    EXPECT_TRUE(got.holds_middle);
    EXPECT_EQ(got.outside, 0) << radius;
  }
}

TEST_F(PolygonCheck, ANarrowerCircleLeavesOutARing) {
  for (const double radius : {20.0, 85.0, 110.0}) {
    const polygon_comparison got =
        compare_polygon(circle(radius - 3), samples, cap(samples, radius));
    EXPECT_TRUE(got.holds_middle);
    const double ring = 2 * pi * (std::cos((radius - 3) * degree) - std::cos(radius * degree));
    EXPECT_NEAR(got.outside, ring, 0.02) << radius;
    EXPECT_NEAR(got.farthest_degrees, 3, 1) << radius;
  }
}

TEST_F(PolygonCheck, APolygonElsewhereDoesNotHoldTheMiddle) {
  device_polygon polygon = circle(30);
  for (Eigen::Vector3d& vertex : polygon) vertex = {-vertex.x(), vertex.y(), -vertex.z()};
  EXPECT_FALSE(compare_polygon(polygon, samples, cap(samples, 20)).holds_middle);
}

TEST_F(PolygonCheck, AVertexThatIsNoDirectionIsTold) {
  device_polygon polygon = circle(30);
  polygon[7] = {0, 0, 0};
  EXPECT_FALSE(compare_polygon(polygon, samples, cap(samples, 20)).is_outline);
}

}  // namespace
}  // namespace ocpan

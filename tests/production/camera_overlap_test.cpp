#include "production/camera_overlap.h"

#include <cmath>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "model/projection.h"
#include "model/rigid_rotation.h"

namespace ocpan {
namespace {

// A camera along -z, its middle pixel a little off the axis.
model_map camera(int width, int height, float hfov, int lens) {
  model_map model = initial_model({width, height, hfov, lens});
  model[H_2] += 0.3;
  model[V_2] -= 0.2;
  return model;
}

model_map turned(const model_map& model, double degrees) {
  return rotate_model(model, rotation_from_vector({0, degrees * pi / 180, 0}));
}

Eigen::Matrix2Xd pixels_of(const Eigen::Matrix3Xd& rays, const model_map& model) {
  Eigen::ArrayXd x, y;
  project_points(x, y, rays, model, Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
  Eigen::Matrix2Xd pixels(2, rays.cols());
  pixels.row(0) = x;
  pixels.row(1) = y;
  return pixels;
}

struct outline_point {
  Eigen::Index index;
  double x;
  double y;
};

void expect_pixels(const Eigen::Matrix2Xd& pixels, const std::vector<outline_point>& expected) {
  ASSERT_EQ(pixels.cols(), 32);
  for (const auto& [k, x, y] : expected) {
    EXPECT_NEAR(pixels(0, k), x, 1e-6) << k;
    EXPECT_NEAR(pixels(1, k), y, 1e-6) << k;
  }
}

Eigen::Vector3d direction(double azimuth_degrees, double elevation_degrees) {
  const double a = azimuth_degrees * pi / 180;
  const double e = elevation_degrees * pi / 180;
  return {std::cos(e) * std::cos(a), std::cos(e) * std::sin(a), std::sin(e)};
}

arc_list arc(const Eigen::Vector3d& from, const Eigen::Vector3d& to) {
  return {from, from.cross(to), {std::acos(from.dot(to))}};
}

TEST(RimArcs, RunAroundARectangularPictureInEighths) {
  // 100 / 8 = 12 and 80 / 8 = 10 by integer division: the top ends at 88, in steps of 88 / 7.
  const model_map model = camera(100, 80, 90, 0);
  const arc_list rim = build_rim_arcs(model, 100, 80, false);
  expect_pixels(pixels_of(rim.starts, model), {{0, 0, 0},
                                               {1, 88 / 7.0, 0},
                                               {7, 88, 0},
                                               {8, 100, 0},
                                               {9, 100, 10},
                                               {15, 100, 70},
                                               {16, 100, 80},
                                               {17, 100 - 88 / 7.0, 80},
                                               {23, 12, 80},
                                               {24, 0, 80},
                                               {25, 0, 70},
                                               {31, 0, 10}});
}

TEST(RimArcs, StopAnEighthShortOnACircularPicture) {
  // 31 steps of 315 / 31 degrees from the bottom; sin 315 = -cos 315 = -0.70710678.
  const model_map model = camera(100, 80, 180, 2);
  const arc_list rim = build_rim_arcs(model, 100, 80, true);
  const double step = 315.0 / 31 * pi / 180;
  expect_pixels(pixels_of(rim.starts, model),
                {{0, 50, 80},
                 {1, 50 * (1 + std::sin(step)), 40 * (1 + std::cos(step))},
                 {31, 14.644660940672624, 68.284271247461902}});
}

TEST(RimArcs, JoinEachPointToTheNextAndTheLastToTheFirst) {
  const arc_list rim = build_rim_arcs(camera(100, 80, 90, 0), 100, 80, false);
  ASSERT_EQ(rim.angles.size(), 32u);
  for (Eigen::Index k = 0; k < 32; ++k) {
    const Eigen::Vector3d from = rim.starts.col(k);
    const Eigen::Vector3d to = rim.starts.col((k + 1) % 32);
    EXPECT_EQ(rim.normals.col(k), from.cross(to)) << k;
    EXPECT_EQ(rim.angles[static_cast<std::size_t>(k)], std::acos(from.dot(to))) << k;
  }
}

TEST(SpokeArcs, RunFromTheMiddleToEachPointOfTheOutline) {
  const model_map model = camera(101, 81, 90, 0);
  const arc_list rim = build_rim_arcs(model, 101, 81, false);
  const arc_list spokes = build_spoke_arcs(model, 101, 81, false);
  ASSERT_EQ(spokes.angles.size(), 32u);
  const Eigen::Matrix2Xd middle = pixels_of(spokes.starts, model);
  for (Eigen::Index k = 0; k < 32; ++k) {
    EXPECT_NEAR(middle(0, k), 50.5, 1e-6);
    EXPECT_NEAR(middle(1, k), 40.5, 1e-6);
    const Eigen::Vector3d from = spokes.starts.col(k);
    const Eigen::Vector3d to = rim.starts.col(k);
    EXPECT_EQ(spokes.normals.col(k), from.cross(to)) << k;
    EXPECT_EQ(spokes.angles[static_cast<std::size_t>(k)], std::acos(from.dot(to))) << k;
  }
}

TEST(CamerasOverlap, SeesArcsThatCross) {
  const arc_list rim = arc(direction(10, 0), direction(80, 0));
  EXPECT_TRUE(cameras_overlap(rim, arc(direction(45, 30), direction(45, -30))));
  // The other way about, the crossing is the other candidate of the two.
  EXPECT_TRUE(cameras_overlap(rim, arc(direction(45, -30), direction(45, 30))));
  EXPECT_FALSE(cameras_overlap(rim, arc(direction(100, 30), direction(100, -30))));
}

TEST(CamerasOverlap, TakesNoAccountOfTheSideOfAStart) {
  // The spoke runs away from the rim, but the crossing lies within its length of its start.
  const arc_list rim = arc(direction(10, 0), direction(80, 0));
  EXPECT_TRUE(cameras_overlap(rim, arc(direction(45, 10), direction(45, 50))));
  EXPECT_FALSE(cameras_overlap(rim, arc(direction(45, 50), direction(45, 10))));
}

TEST(CamerasOverlap, WantsTheCrossingStrictlyInside) {
  const arc_list rim = arc({1, 0, 0}, {0, 0, 1});
  EXPECT_FALSE(cameras_overlap(rim, arc({0.6, 0.8, 0}, {0.6, -0.8, 0})));  // at its start
  const arc_list spoke = arc({0, 1, 0}, {1, 0, 0});
  EXPECT_FALSE(cameras_overlap(arc({0.6, 0, 0.8}, {0.6, 0, -0.8}), spoke));  // at the end
}

TEST(CamerasOverlap, SeesNoCrossingOfParallelArcs) {
  const arc_list rim = arc({1, 0, 0}, {0, 1, 0});
  EXPECT_FALSE(cameras_overlap(rim, rim));
  EXPECT_FALSE(cameras_overlap(rim, arc({0, 1, 0}, {1, 0, 0})));
}

TEST(CamerasOverlap, SeesNoCrossingOfNothing) {
  const arc_list nowhere = arc(Eigen::Vector3d::Constant(std::nan("")), {0, 1, 0});
  EXPECT_FALSE(cameras_overlap(nowhere, arc(direction(45, 30), direction(45, -30))));
  const arc_list none{Eigen::Matrix3Xd(3, 0), Eigen::Matrix3Xd(3, 0), {}};
  EXPECT_FALSE(cameras_overlap(none, none));
}

TEST(CamerasOverlap, TellsNeighboursFromCamerasApart) {
  for (const int lens : {0, 1, 2}) {
    const model_map model = camera(640, 480, 100, lens);
    const arc_list rim = build_rim_arcs(model, 640, 480, lens == 2);
    const auto overlaps = [&](double degrees) {
      return cameras_overlap(rim, build_spoke_arcs(turned(model, degrees), 640, 480, lens == 2));
    };
    EXPECT_TRUE(overlaps(60)) << lens;
    EXPECT_TRUE(overlaps(-60)) << lens;
    EXPECT_FALSE(overlaps(180)) << lens;
  }
}

TEST(CamerasOverlap, HoldsTheRimOfOneAgainstTheSpokesOfTheOther) {
  // The narrow camera looks into the middle of the wide one: its rim crosses the wide one's
  // spokes, but its spokes don't reach the wide one's rim.
  const model_map narrow = camera(640, 480, 30, 0);
  const model_map wide = camera(640, 480, 120, 0);
  EXPECT_TRUE(cameras_overlap(build_rim_arcs(narrow, 640, 480, false),
                              build_spoke_arcs(wide, 640, 480, false)));
  EXPECT_FALSE(cameras_overlap(build_rim_arcs(wide, 640, 480, false),
                               build_spoke_arcs(narrow, 640, 480, false)));
}

}  // namespace
}  // namespace ocpan

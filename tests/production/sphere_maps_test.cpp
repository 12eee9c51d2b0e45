#include "production/sphere_maps.h"

#include <cmath>

#include <gtest/gtest.h>

#include "model/projection.h"

namespace ocpan {
namespace {

constexpr double radius = 1000;

// A camera along -z whose distortion axis stands well off its own, so that back-projection
// gives the rays of one side of the picture the wrong way round.
model_map tilted_model(int width, int height) {
  model_map model = initial_model({width, height, 120, 0});
  model[O_th] = pi - 0.7;
  return model;
}

Eigen::Matrix2Xd grid_pixels(const sphere_grid& grid) {
  Eigen::Matrix2Xd pixels(2, grid.points.cols());
  for (Eigen::Index k = 0; k < pixels.cols(); ++k) {
    pixels.col(k) << static_cast<double>(k / grid.rows * 32),
        static_cast<double>(k % grid.rows * 32);
  }
  return pixels;
}

void expect_projects_to(const sphere_points& points, const model_map& model,
                        const Eigen::Matrix2Xd& pixels) {
  Eigen::ArrayXd x, y;
  project_points(x, y, points, model, Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
  ASSERT_EQ(x.size(), pixels.cols());
  for (Eigen::Index k = 0; k < x.size(); ++k) {
    EXPECT_NEAR(x[k], pixels(0, k), 1e-5) << k;
    EXPECT_NEAR(y[k], pixels(1, k), 1e-5) << k;
    EXPECT_NEAR(points.col(k).norm(), radius, 1e-9) << k;
  }
}

int count_behind(const Eigen::Matrix3Xd& rays, const Eigen::Vector3d& axis) {
  return static_cast<int>(((axis.transpose() * rays).array() < 0).count());
}

TEST(IntersectSphere, CutsAheadOrBehindOfAnOriginInside) {
  const Eigen::Vector3d origin(3, 0, 0);
  const Eigen::Matrix3Xd ray = Eigen::Vector3d(1, 0, 0);
  EXPECT_EQ(intersect_sphere(origin, ray, 5, false), Eigen::Vector3d(5, 0, 0));
  EXPECT_EQ(intersect_sphere(origin, ray, 5, true), Eigen::Vector3d(-5, 0, 0));
}

TEST(IntersectSphere, SolvesARayAcrossTheSphere) {
  // From (0, 3, 0) along x: y stays 3, x is 4 on a sphere of 5.
  const Eigen::Matrix3Xd ray = Eigen::Vector3d(1, 0, 0);
  EXPECT_EQ(intersect_sphere({0, 3, 0}, ray, 5, false), Eigen::Vector3d(4, 3, 0));
  EXPECT_EQ(intersect_sphere({0, 3, 0}, ray, 5, true), Eigen::Vector3d(-4, 3, 0));
}

TEST(IntersectSphere, GivesNotANumberForARayThatMisses) {
  const Eigen::Matrix3Xd ray = Eigen::Vector3d(1, 0, 0);
  const sphere_points points = intersect_sphere({0, 10, 0}, ray, 5, false);
  EXPECT_TRUE(std::isnan(points(0, 0)));
}

TEST(IntersectSphere, AddsItsSquaresFromLeftToRight) {
  // The origin's square is 2^54, where doubles stand 4 apart: with 1.5 squared, 2.25, added
  // it becomes 2^54 + 4, and 4 is left once it is taken off again. Taken off first it would
  // leave 2 or 2.25.
  const Eigen::Vector3d origin(134217728, 0, 0);
  const Eigen::Matrix3Xd ray = Eigen::Vector3d(1, 0, 0);
  EXPECT_EQ(intersect_sphere(origin, ray, 1.5, false), Eigen::Vector3d(2, 0, 0));
  EXPECT_EQ(intersect_sphere(origin, ray, 1.5, true), Eigen::Vector3d(-2, 0, 0));
}

TEST(IntersectSphere, GivesNothingForNoRays) {
  EXPECT_EQ(intersect_sphere({0, 0, 0}, Eigen::Matrix3Xd(3, 0), 5, false).cols(), 0);
}

TEST(SphereGrid, HasALineEvery32PixelsUpToTheLastPixel) {
  // 96 / 32 + 1 = 4 lines, the last one on pixel 96; 32 / 32 + 1 = 2.
  const model_map model = initial_model({97, 33, 90, 0});
  const sphere_grid grid = build_sphere_grid(model, 97, 33, radius);
  EXPECT_EQ(grid.rows, 2);
  ASSERT_EQ(grid.points.cols(), 8);
  expect_projects_to(grid.points, model, grid_pixels(grid));
}

TEST(SphereGrid, HasOneColumnForAWidthOf32) {
  const model_map model = initial_model({32, 65, 90, 0});
  const sphere_grid grid = build_sphere_grid(model, 32, 65, radius);
  EXPECT_EQ(grid.rows, 3);
  EXPECT_EQ(grid.points.cols(), 3);
}

TEST(SphereGrid, HoldsOnePointForASinglePixel) {
  const sphere_grid grid = build_sphere_grid(initial_model({1, 1, 90, 0}), 1, 1, radius);
  EXPECT_EQ(grid.rows, 1);
  EXPECT_EQ(grid.points.cols(), 1);
}

TEST(SphereGrid, TakesTheCameraPositionAsTheRaysOrigin) {
  model_map model = initial_model({640, 470, 100, 1});
  model[C_0] = 30;
  model[C_1] = -20;
  model[C_2] = 15;
  const sphere_grid grid = build_sphere_grid(model, 640, 470, radius);
  ASSERT_EQ(grid.points.cols(), 20 * 15);
  expect_projects_to(grid.points, model, grid_pixels(grid));
}

TEST(SphereGrid, HandsTheSignOnFromTheMiddleOfThePicture) {
  const model_map model = tilted_model(640, 480);
  const Eigen::Vector3d axis(0, 0, -1);
  const sphere_grid grid = build_sphere_grid(model, 640, 480, radius);
  Eigen::Matrix3Xd rays;
  unproject_points(rays, grid_pixels(grid), model);
  ASSERT_GT(count_behind(rays, axis), 10);  // what the walk has to mend
  EXPECT_EQ(count_behind(grid.points, axis), 0);
}

TEST(SphereGrid, TurnsASeedThatPointsAwayFromTheAxis) {
  // The distortion axis points backwards, so every ray comes out the wrong way round.
  model_map model = initial_model({640, 470, 100, 0});
  model[O_th] = 0.1;
  const Eigen::Vector3d axis(0, 0, -1);
  const sphere_grid grid = build_sphere_grid(model, 640, 470, radius);
  Eigen::Matrix3Xd rays;
  unproject_points(rays, grid_pixels(grid), model);
  ASSERT_EQ(count_behind(rays, axis), grid.points.cols());
  EXPECT_EQ(count_behind(grid.points, axis), 0);
}

TEST(SphereGrid, FollowsRaysBeyondARightAngleFromTheAxis) {
  // 220 degrees: the rim of the circle is 110 degrees off the axis, where a sign judged by
  // the axis would be wrong.
  model_map model = initial_model({640, 640, 220, 2});
  model[H_2] += 0.3;  // no grid pixel exactly on the axis
  const sphere_grid grid = build_sphere_grid(model, 640, 640, radius);
  const Eigen::Matrix2Xd pixels = grid_pixels(grid);
  Eigen::ArrayXd x, y;
  project_points(x, y, grid.points, model, Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
  int inside = 0;
  int behind = 0;
  for (Eigen::Index k = 0; k < pixels.cols(); ++k) {
    if ((pixels.col(k) - Eigen::Vector2d(320, 320)).norm() > 319) continue;
    ++inside;
    behind += grid.points(2, k) > 0;
    EXPECT_NEAR(x[k], pixels(0, k), 1e-5) << k;
    EXPECT_NEAR(y[k], pixels(1, k), 1e-5) << k;
  }
  EXPECT_GT(inside, 250);
  EXPECT_GT(behind, 50);
}

TEST(SphereGrid, LeavesASeedOfNoSignAsItIs) {
  // A grid pixel exactly on the axis has no ray; its neighbours keep theirs.
  // This one looks along +z, where sine and cosine are exact.
  const model_map model = {{H_0, 320}, {H_2, 320}, {V_1, -320}, {V_2, 320}, {L, 1}};
  const sphere_grid grid = build_sphere_grid(model, 640, 640, radius);
  const Eigen::Index middle = 10 * 20 + 10;
  EXPECT_TRUE(std::isnan(grid.points(2, middle)));
  EXPECT_GT(grid.points(2, middle + 1), 0);
}

TEST(FeaturesToSphere, PutsPixelsWhereTheCameraSeesThem) {
  model_map model = initial_model({640, 480, 150, 1});
  model[C_0] = 40;
  model[C_2] = -25;
  const sphere_grid grid = build_sphere_grid(model, 640, 480, radius);
  Eigen::Matrix2Xd pixels(2, 4);
  pixels << 0, 12.5, 321.25, 639.75, 0, 400.25, 240.5, 479.5;
  expect_projects_to(features_to_sphere(model, pixels, grid, radius), model, pixels);
}

TEST(FeaturesToSphere, TakesTheSideOfTheGrid) {
  const model_map model = tilted_model(640, 480);
  const sphere_grid grid = build_sphere_grid(model, 640, 480, radius);
  Eigen::Matrix2Xd pixels(2, 640 * 4);
  for (Eigen::Index k = 0; k < pixels.cols(); ++k) {
    pixels.col(k) << static_cast<double>(k % 640) + 0.25, static_cast<double>(k / 640) * 150 + 3;
  }
  Eigen::Matrix3Xd rays;
  unproject_points(rays, pixels, model);
  const Eigen::Vector3d axis(0, 0, -1);
  ASSERT_GT(count_behind(rays, axis), 100);
  EXPECT_EQ(count_behind(features_to_sphere(model, pixels, grid, radius), axis), 0);
}

TEST(FeaturesToSphere, LooksUpTheCellAtOrBeforeThePixel) {
  // Two by two cells, of which only column 1, row 0 lies behind the camera.
  const model_map model = initial_model({63, 63, 90, 0});
  sphere_grid grid{sphere_points(3, 4), 2};
  grid.points.row(0).setZero();
  grid.points.row(1).setZero();
  grid.points.row(2) << -radius, -radius, radius, -radius;
  Eigen::Matrix2Xd pixels(2, 5);
  pixels << 31.9, 32, 62.9, 40, 5,  //
      5, 31.9, 5, 32, 40;
  const sphere_points points = features_to_sphere(model, pixels, grid, radius);
  const double expected_sign[] = {-1, 1, 1, -1, -1};
  for (Eigen::Index k = 0; k < 5; ++k) EXPECT_GT(points(2, k) * expected_sign[k], 0) << k;
}

TEST(FeaturesToSphere, GivesPixelsOutsideTheNearestCell) {
  // One column and one row of cells; only its own is there to be asked.
  const model_map model = initial_model({31, 31, 90, 0});
  const sphere_grid grid{Eigen::Vector3d(0, 0, radius), 1};
  Eigen::Matrix2Xd pixels(2, 5);
  pixels << 500, -500, 5, 1e300, 5,  //
      5, 5, 500, 5, -1e300;
  const sphere_points points = features_to_sphere(model, pixels, grid, radius);
  for (Eigen::Index k = 0; k < 3; ++k) EXPECT_GT(points(2, k), 0) << k;
  Eigen::Matrix2Xd nowhere = Eigen::Matrix2Xd::Constant(2, 1, std::nan(""));
  EXPECT_TRUE(std::isnan(features_to_sphere(model, nowhere, grid, radius)(0, 0)));
}

TEST(FeaturesToSphere, TakesTheFarSideWithoutAGridPoint) {
  const model_map model = initial_model({31, 31, 90, 0});
  const sphere_grid grid{Eigen::Vector3d::Constant(std::nan("")), 1};
  const Eigen::Matrix2Xd pixel = Eigen::Vector2d(5, 5);
  EXPECT_GT(features_to_sphere(model, pixel, grid, radius)(2, 0), 0);
}

}  // namespace
}  // namespace ocpan

// How the signs of a grid's rays are handed on from cell to cell.

#include <cmath>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "model/projection.h"
#include "production/sphere_maps.h"

namespace ocpan {
namespace {

constexpr double radius = 1000;

struct picture_size {
  int columns;
  int rows;
};

Eigen::Matrix3Xd raw_rays(const model_map& model, const picture_size& size) {
  std::vector<Eigen::Vector2d> pixels;
  for (int x = 0; x < size.columns; x += 32) {
    for (int y = 0; y < size.rows; y += 32) pixels.emplace_back(x, y);
  }
  Eigen::Matrix2Xd columns(2, static_cast<Eigen::Index>(pixels.size()));
  for (Eigen::Index k = 0; k < columns.cols(); ++k) {
    columns.col(k) = pixels[static_cast<std::size_t>(k)];
  }
  Eigen::Matrix3Xd rays;
  unproject_points(rays, columns, model);
  return rays;
}

Eigen::Vector3d lens_axis(const model_map& model) {
  return direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
}

// What the walk is to leave: the list of calls grows at its end and is worked off from its
// front.
struct plain_walk {
  Eigen::Matrix3Xd rays;
  int turned = 0;         // rays that were negated
  int nan_parents = 0;    // cells with a ray whose parent has none, which can't turn them
  int missing_cells = 0;  // without a ray

  plain_walk(const model_map& model, const picture_size& size) : rays(raw_rays(model, size)) {
    const int columns = (size.columns - 1) / 32 + 1;
    const int rows = (size.rows - 1) / 32 + 1;
    const int seed_column = (size.columns + 31) / 64;
    const int seed_row = (size.rows + 31) / 64;
    struct call {
      int column, row;
      Eigen::Index parent;
    };
    std::vector<call> calls;
    std::vector<int> seen(static_cast<std::size_t>(rays.cols()), 0);
    const auto turn = [&](Eigen::Index cell) {
      rays.col(cell) *= -1;
      ++turned;
    };
    const Eigen::Index seed = seed_column * rows + seed_row;
    seen[static_cast<std::size_t>(seed)] = 1;
    if (rays.col(seed).dot(lens_axis(model)) < 0) turn(seed);
    calls.push_back({seed_column, seed_row - 1, seed});
    calls.push_back({seed_column - 1, seed_row, seed});
    calls.push_back({seed_column + 1, seed_row, seed});
    calls.push_back({seed_column, seed_row + 1, seed});
    for (std::size_t next = 0; next < calls.size(); ++next) {
      const auto [c, r, parent] = calls[next];
      if (c < 0 || r < 0 || c >= columns || r >= rows) continue;
      const Eigen::Index cell = c * rows + r;
      if (seen[static_cast<std::size_t>(cell)]++ > 0) continue;
      const Eigen::Vector3d ray = rays.col(cell);
      const Eigen::Vector3d from = rays.col(parent);
      missing_cells += ray.hasNaN();
      nan_parents += from.hasNaN() && !ray.hasNaN();
      if ((from + ray).norm() < (from - ray).norm()) turn(cell);
      calls.push_back({c - 1, r, cell});
      calls.push_back({c, r - 1, cell});
      calls.push_back({c + 1, r, cell});
      calls.push_back({c, r + 1, cell});
    }
  }
};

// The grid's points stand on the walk's rays, all of which start in the sphere's middle.
void expect_walk(const model_map& model, const picture_size& size, const plain_walk& walk) {
  const sphere_grid grid = build_sphere_grid(model, size.columns, size.rows, radius);
  ASSERT_EQ(grid.points.cols(), walk.rays.cols());
  for (Eigen::Index k = 0; k < grid.points.cols(); ++k) {
    const Eigen::Vector3d ray = walk.rays.col(k);
    if (ray.hasNaN()) {
      EXPECT_TRUE(std::isnan(grid.points(0, k))) << k;
    } else {
      EXPECT_LT((grid.points.col(k) - radius * ray).norm(), 1e-9) << k;
    }
  }
}

// A picture whose corners and rims lie beyond what the lens sees, and whose rays all come
// out the wrong way round.
model_map circle_model(const picture_size& size, double field_degrees) {
  model_map model = initial_model({size.columns, size.rows, static_cast<float>(field_degrees), 2});
  model[O_th] = 0.2;
  model[O_ph] = 0.7;
  model[H_2] += 7.3;
  model[V_2] -= 4.1;
  for (const parameter_name key : {H_0, V_1}) model[key] *= 0.7;  // a smaller circle
  return model;
}

TEST(SphereGridWalk, CallsOnCellsInTheOrderTheyWereNamed) {
  int turned = 0, nan_parents = 0, missing = 0;
  for (const picture_size size : {picture_size{640, 640}, {1000, 640}, {500, 900}, {1290, 970}}) {
    for (const double field : {180.0, 220.0, 260.0}) {
      const model_map model = circle_model(size, field);
      const plain_walk walk(model, size);
      expect_walk(model, size, walk);
      turned += walk.turned;
      nan_parents += walk.nan_parents;
      missing += walk.missing_cells;
    }
  }
  EXPECT_GT(turned, 1000);
  EXPECT_GT(missing, 500);
  EXPECT_GT(nan_parents, 3);
}

// Looks along -z with its middle in a pixel, whose ray doesn't exist, and with a distortion
// axis of exactly +z, so that every other ray comes out the wrong way round.
model_map backward_model(int middle_x, int middle_y) {
  return {{A_th, pi},  {A_ph, 0},        {H_0, 256}, {H_2, -middle_x},
          {V_1, -256}, {V_2, -middle_y}, {L, 1}};
}

TEST(SphereGridWalk, StartsAtTheMiddleRoundedUp) {
  // The middle between lines is 48; the walk is to start at line 2, pixel 64, and not at
  // line 1, which has no ray and could turn none of its neighbours.
  const picture_size size{97, 97};
  int turned = 0;
  for (const auto& [x, y] : {std::pair{32, 64}, std::pair{64, 32}, std::pair{32, 32}}) {
    const model_map model = backward_model(x, y);
    const plain_walk walk(model, size);
    ASSERT_EQ(walk.missing_cells, 1);
    expect_walk(model, size, walk);
    turned += walk.turned;
  }
  EXPECT_GT(turned, 3 * 10);
}

TEST(SphereGridWalk, LeavesASeedPerpendicularToTheAxisAsItIs) {
  // A single pixel, on the ray (-H_2, 0, 1). The lens bends the angle a from its distortion
  // axis, which leans by 1 towards +x, to tan(a): at this H_2 to lie across +z, the camera's
  // axis. The roundings decide where the ray's z is just 0, which is looked for nearby.
  model_map model = {{H_0, 1}, {V_1, 1}, {O_th, 1}};
  const picture_size pixel{1, 1};
  const double across = -std::tan(1 + std::atan(pi / 2 - 1));
  double up = across, down = across;
  Eigen::Vector3d ray;
  for (int step = 0; step < 1000000; ++step) {
    model[H_2] = step % 2 == 0 ? up = std::nextafter(up, 0) : down = std::nextafter(down, -99);
    ray = raw_rays(model, pixel).col(0);
    if (ray.z() == 0) break;
  }
  ASSERT_EQ(ray.z(), 0);
  ASSERT_EQ(lens_axis(model), Eigen::Vector3d(0, 0, 1));
  EXPECT_GT(build_sphere_grid(model, 1, 1, radius).points.col(0).dot(ray), 0);
}

}  // namespace
}  // namespace ocpan

#include "production/sphere_maps.h"

#include <array>
#include <cmath>
#include <queue>
#include <vector>

#include "model/projection.h"

namespace ocpan {
namespace {

constexpr int pitch = 32;  // pixels between grid lines

struct grid_cell {
  int column;
  int row;
};

struct visit {
  grid_cell cell;
  Eigen::Index parent;
};

// The rays of all grid pixels, as back-projection leaves them.
Eigen::Matrix3Xd grid_rays(const model_map& model, int grid_columns, int grid_rows) {
  Eigen::Matrix2Xd pixels(2, Eigen::Index{grid_columns} * grid_rows);
  Eigen::Index k = 0;
  for (int c = 0; c < grid_columns; ++c) {
    for (int r = 0; r < grid_rows; ++r) pixels.col(k++) << c * pitch, r * pitch;
  }
  Eigen::Matrix3Xd rays;
  unproject_points(rays, pixels, model);
  return rays;
}

// Turns rays about, breadth first from the seed, until each is on its neighbour's side.
void align_signs(Eigen::Matrix3Xd& rays, int grid_columns, int grid_rows, grid_cell seed) {
  const auto index = [&](grid_cell at) { return Eigen::Index{at.column} * grid_rows + at.row; };
  std::vector<bool> visited(static_cast<std::size_t>(rays.cols()), false);
  std::queue<visit> waiting;
  const auto call_on = [&](grid_cell from, const std::array<grid_cell, 4>& steps) {
    for (const grid_cell step : steps) {
      waiting.push({{from.column + step.column, from.row + step.row}, index(from)});
    }
  };
  visited[static_cast<std::size_t>(index(seed))] = true;
  call_on(seed, {{{0, -1}, {-1, 0}, {1, 0}, {0, 1}}});
  while (!waiting.empty()) {
    const auto [cell, parent] = waiting.front();
    waiting.pop();
    if (cell.column < 0 || cell.column >= grid_columns || cell.row < 0 || cell.row >= grid_rows) {
      continue;
    }
    const Eigen::Index k = index(cell);
    if (visited[static_cast<std::size_t>(k)]) continue;
    visited[static_cast<std::size_t>(k)] = true;
    const Eigen::Vector3d before = rays.col(parent);
    if ((before + rays.col(k)).norm() < (before - rays.col(k)).norm()) rays.col(k) *= -1;
    call_on(cell, {{{-1, 0}, {0, -1}, {1, 0}, {0, 1}}});
  }
}

// The grid line at or before a pixel coordinate, held inside the grid.
Eigen::Index line_before(double coordinate, Eigen::Index lines) {
  const double last = static_cast<double>(lines - 1);
  const double line = std::trunc(coordinate / pitch);
  if (!(line > 0)) return 0;  // so that not-a-number has a cell too
  return line < last ? static_cast<Eigen::Index>(line) : lines - 1;
}

}  // namespace

sphere_points intersect_sphere(const Eigen::Vector3d& origin, const Eigen::Matrix3Xd& rays,
                               double radius, bool backward) {
  sphere_points points(3, rays.cols());
  const double square = radius * radius;
  const double origin_square = origin.dot(origin);
  for (Eigen::Index k = 0; k < rays.cols(); ++k) {
    const Eigen::Vector3d ray = rays.col(k);
    const double b = origin.dot(ray);
    const double root = std::sqrt(b * b + square - origin_square);
    const double t = backward ? -b - root : -b + root;
    points.col(k) = origin + t * ray;
  }
  return points;
}

sphere_grid build_sphere_grid(const model_map& model, int columns, int rows, double radius) {
  const int grid_columns = (columns - 1) / pitch + 1;
  const int grid_rows = (rows - 1) / pitch + 1;
  Eigen::Matrix3Xd rays = grid_rays(model, grid_columns, grid_rows);

  const Eigen::Vector3d axis = direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
  const grid_cell seed = {(columns - 1 + pitch) / (2 * pitch), (rows - 1 + pitch) / (2 * pitch)};
  const Eigen::Index seed_index = Eigen::Index{seed.column} * grid_rows + seed.row;
  if (rays.col(seed_index).dot(axis) < 0) rays.col(seed_index) *= -1;
  align_signs(rays, grid_columns, grid_rows, seed);

  return {intersect_sphere(vector_of(model, C_0), rays, radius, false), grid_rows};
}

sphere_points features_to_sphere(const model_map& model, const Eigen::Matrix2Xd& pixels,
                                 const sphere_grid& grid, double radius) {
  Eigen::Matrix3Xd rays;
  unproject_points(rays, pixels, model);
  const Eigen::Vector3d origin = vector_of(model, C_0);
  sphere_points points = intersect_sphere(origin, rays, radius, false);
  const sphere_points behind = intersect_sphere(origin, rays, radius, true);
  const Eigen::Index grid_columns = grid.points.cols() / grid.rows;
  for (Eigen::Index k = 0; k < pixels.cols(); ++k) {
    const Eigen::Index cell =
        line_before(pixels(0, k), grid_columns) * grid.rows + line_before(pixels(1, k), grid.rows);
    const Eigen::Vector3d near = grid.points.col(cell);
    const bool forward = (near - behind.col(k)).norm() > (near - points.col(k)).norm();
    if (!forward) points.col(k) = behind.col(k);
  }
  return points;
}

}  // namespace ocpan

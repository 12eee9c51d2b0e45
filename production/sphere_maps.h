#pragma once

#include <Eigen/Core>

#include "model/parameters.h"

namespace ocpan {

// Points on the fixture sphere, 3 x N, in the rig's frame, mm. A coordinate's row lies
// contiguous in memory, so that blocks of points can be worked on as arrays.
using sphere_points = Eigen::Matrix<double, 3, Eigen::Dynamic, Eigen::RowMajor>;

// Where a camera sees the fixture sphere: the points of every 32nd pixel in x and y.
struct sphere_grid {
  sphere_points points;  // column * rows + row
  int rows = 0;
};

// Cuts rays with the sphere about the rig's origin.
//
//   origin     where all rays start, mm
//   rays       3 x N unit vectors
//   radius     mm
//   backward   takes the cut at the smaller, usually negative, distance along the ray
//
// Returns 3 x N; a ray that misses gives not-a-number.
sphere_points intersect_sphere(const Eigen::Vector3d& origin, const Eigen::Matrix3Xd& rays,
                               double radius, bool backward);

// Carries a grid of pixels to the sphere. A back-projected ray may point either way for
// wide lenses: the sign is set at the middle of the picture by the lens axis and handed
// on from pixel to pixel, which holds beyond 180 degrees where the axis can't judge.
//
//   columns, rows   size of the picture, pixels, above 0
//   radius          mm
sphere_grid build_sphere_grid(const model_map& model, int columns, int rows, double radius);

// Carries pixels to the sphere, each on the side where the grid has its cell.
//
//   pixels   2 x N, row 0 is x, row 1 is y; one outside the picture goes by the nearest cell
//   grid     of the same camera and radius
sphere_points features_to_sphere(const model_map& model, const Eigen::Matrix2Xd& pixels,
                                 const sphere_grid& grid, double radius);

}  // namespace ocpan

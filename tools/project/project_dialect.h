#pragma once

#include <Eigen/Core>

namespace ocpan {

// The common stitching tools and the library read the same letters of a project file and
// multiply from opposite sides: a tool turns a direction as R p, the library as p R, and a
// tool shears a position as S (x, y), the library as (x, y) S. What follows gives the
// numbers that make the library do what the tool does with the old ones.

// The attitude of a camera, radians. A tool turns by yaw first, then by pitch (upward) and
// last by roll (the picture turns clockwise).
struct project_angles {
  double yaw = 0, pitch = 0, roll = 0;
};

// A turn is undone from the other side and seen in a frame whose y and z are reversed: yaw
// and roll keep their sense, pitch is reversed, and the order is roll, pitch, yaw. The
// angles are those of that product in the library's order; straight up and straight down,
// where only yaw and roll together count, are no exception.
project_angles dialect_angles(const project_angles& tool);

// The shear (g, t), pixels. Both are relative to a side of the picture, g to its height and
// t to its width, so they change places with their sides.
//
//   size   of the picture, or of its crop; pixels, not 0
Eigen::Vector2d dialect_shear(const Eigen::Vector2d& tool, const Eigen::Vector2d& size);

// The shift (d, e), pixels. A tool shears a cropped picture about the middle of the crop, the
// library about that of the whole picture.
//
//   shear    the tool's g and t
//   size     of the crop
//   offset   from the picture's middle to the crop's; 0 leaves the shift as it is
Eigen::Vector2d dialect_shift(const Eigen::Vector2d& tool, const Eigen::Vector2d& shear,
                              const Eigen::Vector2d& size, const Eigen::Vector2d& offset);

}  // namespace ocpan

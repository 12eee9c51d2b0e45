#pragma once

#include <cstdint>

#include <Eigen/Core>

#include "simulator/rig_description.h"

namespace ocpan {

// A production fixture: a sphere about the rig's origin whose inside bears a checker
// pattern between two circles of latitude, and the pictures taken in it. The pattern's
// lines are circles of latitude and meridians about the pole, so its cells are square at
// the equator and narrow towards the pole.
struct fixture_description {
  double radius_mm = 1000;
  double cell_degrees = 4;                          // made to divide the equator evenly
  Eigen::Vector3d pole = Eigen::Vector3d::UnitY();  // rig's frame, unit
  double low_latitude_degrees = -60;                // moved to the nearest line
  double high_latitude_degrees = 60;
  double dark = 40;  // grey values
  double bright = 215;
  double blur = 0.8;        // sigma of a Gaussian, pixels
  double noise = 1.5;       // sigma of a Gaussian, grey values
  double vignetting = 0.3;  // loss of light at the farthest corner
  std::uint64_t seed = 1;
};

// The fixture that suits a rig. Its pole is the axis of two cameras that look away from one
// another, otherwise it stands across all axes as well as can be. A rig of more than two
// cameras gets a pattern on one half of the sphere: with the same cells on opposite sides
// every cell would have partners across the sphere.
fixture_description suitable_fixture(const rig_description& description);

// Where points lie in the pattern, counted in cells.
class pattern_map {
 public:
  explicit pattern_map(const fixture_description& fixture);

  int meridians() const { return meridians_; }  // even: the pattern closes
  int low_line() const { return low_line_; }    // the pattern's first circle
  int high_line() const { return high_line_; }  // and last
  // The longitude u, 0 to meridians(), and the latitude v of a point of any length.
  Eigen::Vector2d cell_position(const Eigen::Vector3d& point) const;
  // The direction of a place in the pattern, unit, rig's frame.
  Eigen::Vector3d direction(double u, double v) const;

 private:
  Eigen::Matrix3d rig_from_pattern_;  // the pole is the pattern's z
  int meridians_;
  double degrees_per_line_;
  int low_line_;
  int high_line_;
};

// Where the rays from a camera meet the sphere, 3 x N, rig's frame; not-a-number for a
// pixel that the lens can't see.
//
//   pixels   2 x N
Eigen::Matrix3Xd seen_on_sphere(const model_map& model, const Eigen::Matrix2Xd& pixels,
                                double radius_mm);

}  // namespace ocpan

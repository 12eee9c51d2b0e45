#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/verify/cube_sphere.h"

namespace ocpan {

// What a camera has in the directions of a list of samples, 1 or 0 each.
struct camera_reach {
  std::vector<std::uint8_t> weight;  // a weight in its table
  std::vector<std::uint8_t> seen;    // a place in its picture, masked or not
};

// A connected part of the sphere where no camera has weight though a picture shows it.
struct coverage_hole {
  double solid_angle = 0;  // steradians
  look_angles middle;
  std::vector<std::size_t> seen_by;  // cameras whose pictures show some of it
};

struct sphere_coverage {
  std::vector<double> of_cameras;    // steradians with weight, by camera
  double together = 0;               // steradians with weight of any camera
  double unseen = 0;                 // steradians that no picture shows
  std::vector<coverage_hole> holes;  // the largest first
};

// Finds what no camera covers.
sphere_coverage coverage_of(const std::vector<cube_sample>& samples, const cube_places& places,
                            const std::vector<camera_reach>& cameras);

}  // namespace ocpan

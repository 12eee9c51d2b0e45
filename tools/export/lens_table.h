#pragma once

#include <vector>

#include "model/parameters.h"

namespace ocpan {

// How a lens bends: how far from the middle a ray lands by its angle from the lens's axis.
struct lens_table {
  std::vector<double> angle_degrees;  // from 0 in equal steps
  std::vector<double> radius;         // of the same length, in units of the focal length
  // The largest error of a straight line between two rows, in units of the focal length.
  double interpolation_error = 0;
};

// Samples a lens up to the first row that reaches a radius, or to where the law ends.
//
//   model         L and the rho are read, the rest plays no part
//   largest_radius  in units of the focal length; infinity for the whole law
[[nodiscard]] lens_table sample_lens(const model_map& model, double largest_radius);

}  // namespace ocpan

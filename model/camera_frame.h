#pragma once

#include <array>

#include <Eigen/Core>

#include "model/parameters.h"

namespace ocpan {

// A camera's model with everything looked up and worked out once that doesn't change from
// point to point. Whoever projects with the same camera again and again keeps one; everybody
// else passes the model itself. What the model lacks counts as 0.
struct camera_frame {
  camera_frame(const model_map& model);  // NOLINT(google-explicit-constructor): see above

  Eigen::Vector3d centre, horizontal, vertical;  // C, H, V
  Eigen::Vector3d axis, distortion_axis;         // A, O
  std::array<Eigen::Vector3d, 2> axis_by;        // derivatives of A by A_th and A_ph
  std::array<Eigen::Vector3d, 2> distortion_axis_by;
  double r0, r1, r2;
  double chi_limit;  // monotonic_limit of these
  double law;        // L
};

// The smallest positive chi at which the outward distortion polynomial
// (1 + r0) chi + r1 chi^3 + r2 chi^5 stops growing; 1e12 if it never does.
double monotonic_limit(double r0, double r1, double r2);

}  // namespace ocpan

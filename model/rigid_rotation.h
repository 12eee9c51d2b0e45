#pragma once

#include <Eigen/Core>

#include "model/parameters.h"

namespace ocpan {

// The proper rotation nearest a 3 x 3 matrix in the Frobenius norm (Arun, Huang, Blostein,
// Least-squares fitting of two 3-D point sets, 1987; Umeyama's sign, 1991), also for a
// reflecting matrix. A zero matrix gives the identity, one that isn't finite not-a-number.
Eigen::Matrix3d closest_rotation(const Eigen::Matrix3d& m);

// The model with C, H, V and the axes A and O turned by a rotation; rho and L stay.
model_map rotate_model(const model_map& model, const Eigen::Matrix3d& rotation);

}  // namespace ocpan

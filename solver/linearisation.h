#pragma once

#include <vector>

#include <Eigen/Core>

#include "solver/problem.h"

namespace ocpan {

// At most six columns: the free parameters of one pose.
using pose_matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, 0, 6, 6>;
using pose_vector = Eigen::Matrix<double, Eigen::Dynamic, 1, 0, 6, 1>;

// The largest column norms met so far in a solve, by which columns are divided. They only
// grow.
struct column_scales {
  explicit column_scales(const column_layout& layout);

  Eigen::VectorXd camera;
  pose_vector pose;  // one for all shots
};

// One shot's part of the normal equations, with the columns of the cameras it touches.
struct shot_equations {
  pose_matrix c;      // pose by pose
  Eigen::MatrixXd b;  // touched camera columns by pose
  pose_vector g;      // pose gradient
};

// The problem linearised at a state, columns scaled.
struct linearisation {
  Eigen::MatrixXd a;  // camera by camera
  Eigen::VectorXd g;  // camera gradient
  std::vector<shot_equations> shots;
  double cost = 0;          // squared image residuals over sigma squared
  double sample_count = 0;  // twice the sum of the weights
};

// Linearises the problem at a state. Residuals are weight (observed - projected) / sigma,
// without the projection's clamps; term rows enter the gradient, the matrix and the
// scales, but not the cost. scales grows to the columns met here.
linearisation linearise(const solver_problem& problem, const solver_state& state, double sigma,
                        column_scales& scales);

}  // namespace ocpan

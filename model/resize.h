#pragma once

#include <Eigen/Core>

namespace ocpan {

// Gives a matrix or vector of Eigen's a size; its numbers are undefined then. To be used in
// place of its resize() where it may hold another size: when memory runs out, that one leaves
// it with a block already given back, which its destructor gives back again.
template <typename Matrix>
void resize(Matrix& matrix, Eigen::Index rows, Eigen::Index columns) {
  if (matrix.rows() == rows && matrix.cols() == columns) return;
  matrix = Matrix();
  matrix.resize(rows, columns);
}

}  // namespace ocpan

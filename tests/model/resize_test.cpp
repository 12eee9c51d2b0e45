#include "model/resize.h"

#include <new>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

TEST(Resize, GivesTheSize) {
  Eigen::MatrixXd matrix(2, 3);
  resize(matrix, 4, 5);
  EXPECT_EQ(matrix.rows(), 4);
  EXPECT_EQ(matrix.cols(), 5);
  Eigen::ArrayXd array;
  resize(array, 7, 1);
  EXPECT_EQ(array.size(), 7);
}

TEST(Resize, LeavesAMatrixOfThatSizeAlone) {
  Eigen::Matrix3Xd matrix = Eigen::Matrix3Xd::Constant(3, 2, 1.5);
  const double* const numbers = matrix.data();
  resize(matrix, 3, 2);
  EXPECT_EQ(matrix.data(), numbers);
  EXPECT_EQ(matrix(2, 1), 1.5);
}

#ifndef __SANITIZE_ADDRESS__  // which ends the program where there is no memory
TEST(Resize, LeavesAnEmptyMatrixWithoutMemory) {
  Eigen::MatrixXd matrix(2, 3);
  EXPECT_THROW(resize(matrix, Eigen::Index{1} << 30, Eigen::Index{1} << 28), std::bad_alloc);
  EXPECT_EQ(matrix.data(), nullptr);  // its block is given back, once
}
#endif

}  // namespace
}  // namespace ocpan

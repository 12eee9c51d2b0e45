#pragma once

#include <Eigen/SVD>

// To be included where the SVD of a matrix of any size is taken, in place of <Eigen/SVD>.
//
// Eigen 3.4 destroys a member of its SVD and builds it anew in place. When memory runs out
// halfway, the member is destroyed a second time on the way out and the program dies. Here
// the new one is built first. Its numbers are the same.
#if !EIGEN_VERSION_AT_LEAST(3, 4, 90)
namespace Eigen::internal {

template <>
inline void qr_preconditioner_impl<
    MatrixXd, ColPivHouseholderQRPreconditioner, PreconditionIfMoreRowsThanCols,
    true>::allocate(const JacobiSVD<MatrixXd, ColPivHouseholderQRPreconditioner>& svd) {
  m_qr = QRType(svd.rows(), svd.cols());
  if (svd.computeU()) m_workspace.resize(svd.m_computeFullU ? svd.rows() : svd.cols());
}

}  // namespace Eigen::internal
#endif

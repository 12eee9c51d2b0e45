#include "calibration/pair_alignment.h"

#include <algorithm>
#include <cmath>

#include "model/rigid_rotation.h"

namespace ocpan {

Eigen::Matrix3Xd joined(const std::vector<Eigen::Matrix3Xd>& list) {
  Eigen::Index columns = 0;
  for (const Eigen::Matrix3Xd& part : list) columns += part.cols();
  Eigen::Matrix3Xd all(3, columns);
  Eigen::Index start = 0;
  for (const Eigen::Matrix3Xd& part : list) {
    all.middleCols(start, part.cols()) = part;
    start += part.cols();
  }
  return all;
}

weighted_rotation pair_alignment(const point_lists& lists) {
  constexpr double least_error = 0.001;  // bounds the weight of a perfect fit
  const Eigen::Matrix3Xd p = joined(lists.list0);
  const Eigen::Matrix3Xd q = joined(lists.list1);
  const double count = static_cast<double>(p.cols());
  const Eigen::Vector3d p_centroid = p.rowwise().sum() / count;
  const Eigen::Vector3d q_centroid = q.rowwise().sum() / count;
  const Eigen::Matrix3Xd p_centred = p.colwise() - p_centroid;
  const Eigen::Matrix3Xd q_centred = q.colwise() - q_centroid;
  const Eigen::Matrix3d r = closest_rotation(q_centred * p_centred.transpose());
  const double error = (r * p_centred - q_centred).squaredNorm();
  return {r, std::sqrt(count / std::max(error, least_error))};
}

}  // namespace ocpan

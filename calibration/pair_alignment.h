#pragma once

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include <Eigen/Core>

namespace ocpan {

// Two cameras of the rig, the lower index first.
using camera_pair = std::pair<std::size_t, std::size_t>;

// Board corners that both cameras of a pair saw, matrix by matrix, 3 x M each in the frame
// of one camera. Corner k of a matrix is the same point in both lists.
struct point_lists {
  std::vector<Eigen::Matrix3Xd> list0;  // in the frame of the pair's second camera
  std::vector<Eigen::Matrix3Xd> list1;  // in the frame of the pair's first camera
};
using pair_points = std::map<camera_pair, point_lists>;

// How one camera's frame is turned against another's, and how much that is worth. A pair
// that shares no board has the identity and weight 0, and takes part in all sums so.
struct weighted_rotation {
  Eigen::Matrix3d rotation = Eigen::Matrix3d::Identity();
  double weight = 0;
};

// The rotation that maps the points of list 0, about their centroid, nearest to those of
// list 1 (Arun, Huang, Blostein, Least-squares fitting of two 3-D point sets, 1987). The
// weight is sqrt(M / E), with E the sum of the squared residuals, at least 0.001, over M
// points.
weighted_rotation pair_alignment(const point_lists& lists);

// All matrices of a list side by side.
Eigen::Matrix3Xd joined(const std::vector<Eigen::Matrix3Xd>& list);

}  // namespace ocpan

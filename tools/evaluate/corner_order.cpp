#include "tools/evaluate/corner_order.h"

namespace ocpan {

std::vector<Eigen::Matrix2Xd> other_orders(const Eigen::Matrix2Xd& corners,
                                           const Eigen::Matrix3Xd& points) {
  const Eigen::Index width = (points.row(1).array() == points(1, 0)).count();
  const Eigen::Index count = points.cols();
  std::vector<Eigen::Matrix2Xd> orders = {corners.rowwise().reverse()};
  if (width * width != count) return orders;
  Eigen::Matrix2Xd quarter(2, count);
  for (Eigen::Index k = 0; k < count; ++k) {
    const Eigen::Index x = k % width;
    const Eigen::Index y = k / width;
    quarter.col(k) = corners.col((width - 1 - x) * width + y);
  }
  orders.push_back(quarter);
  orders.push_back(quarter.rowwise().reverse());
  return orders;
}

}  // namespace ocpan

#include "tools/evaluate/corner_order.h"

#include <gtest/gtest.h>

#include "calibration/board_groups.h"

namespace ocpan {
namespace {

// Corners whose x is their number.
Eigen::Matrix2Xd numbered(Eigen::Index count) {
  Eigen::Matrix2Xd corners = Eigen::Matrix2Xd::Zero(2, count);
  corners.row(0) = Eigen::RowVectorXd::LinSpaced(count, 0, static_cast<double>(count - 1));
  return corners;
}

TEST(OtherOrders, OfAnOblongBoardIsTheHalfTurn) {
  const auto orders = other_orders(numbered(6), board_points(3, 2, 25));
  ASSERT_EQ(orders.size(), 1u);
  EXPECT_EQ(orders[0].row(0), (Eigen::RowVectorXd(6) << 5, 4, 3, 2, 1, 0).finished());
}

TEST(OtherOrders, OfASquareBoardAreItsThreeTurns) {
  // 0 1   turned by quarters   1 3   and   2 0
  // 2 3                        0 2         3 1
  const auto orders = other_orders(numbered(4), board_points(2, 2, 25));
  ASSERT_EQ(orders.size(), 3u);
  EXPECT_EQ(orders[0].row(0), (Eigen::RowVectorXd(4) << 3, 2, 1, 0).finished());
  EXPECT_EQ(orders[1].row(0), (Eigen::RowVectorXd(4) << 2, 0, 3, 1).finished());
  EXPECT_EQ(orders[2].row(0), (Eigen::RowVectorXd(4) << 1, 3, 0, 2).finished());
}

}  // namespace
}  // namespace ocpan

#include "tools/adjust/board_shape.h"

#include <algorithm>

namespace ocpan {
namespace {

// From -1 to 1 over the corners; 0 where they have no extent.
Eigen::ArrayXd spread_evenly(const Eigen::ArrayXd& values) {
  const double low = values.minCoeff(), high = values.maxCoeff();
  if (!(high > low)) return Eigen::ArrayXd::Zero(values.size());
  return (values - (low + high) / 2) / ((high - low) / 2);
}

board_shape shape_of(const Eigen::Matrix3Xd& points) {
  board_shape shape{points, {}};
  shape.bend_rows.resize(points.cols(), 2);
  for (int i = 0; i < 2; ++i) {
    shape.bend_rows.col(i) = 1 - spread_evenly(points.row(i).transpose().array()).square();
  }
  return shape;
}

}  // namespace

physical_boards tell_boards_apart(const std::vector<seen_board>& boards) {
  physical_boards physical;
  for (const seen_board& board : boards) {
    const auto known =
        std::find_if(physical.shapes.begin(), physical.shapes.end(), [&](const board_shape& shape) {
          return shape.points.cols() == board.points.cols() && shape.points == board.points;
        });
    physical.of_seen.push_back(static_cast<std::size_t>(known - physical.shapes.begin()));
    if (known == physical.shapes.end()) physical.shapes.push_back(shape_of(board.points));
  }
  return physical;
}

void bend_points(Eigen::Matrix3Xd& bent, const board_shape& shape, const board_bend& bend) {
  bent = shape.points;
  bent.row(2) +=
      (bend.along_width * shape.bend_rows.col(0) + bend.along_height * shape.bend_rows.col(1))
          .matrix()
          .transpose();
}

}  // namespace ocpan

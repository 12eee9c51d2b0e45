#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <Eigen/Core>

#include "production/feature_records.h"

namespace ocpan {

struct nearest_corner {
  std::int32_t index;  // -1 if there is none
  double cost;         // the largest double if there is none
};

// The corners of one picture, sorted into square cells so that a search looks near by
// first. Their positions must be finite.
class corner_grid {
 public:
  explicit corner_grid(const std::vector<prod_corner>& corners);

  // The corner that lies nearest ahead of a position along a direction. With v the offset
  // of a corner and t = v . direction, corners with t below 0 are left out, and the cost of
  // the others is t + 5 |v - t direction|. The lowest index wins a tie.
  //
  //   position    finite
  //   direction   unit
  //   excluded    indices of corners that don't take part
  nearest_corner nearest_along(const Eigen::Vector2d& position, const Eigen::Vector2d& direction,
                               std::span<const std::int32_t> excluded) const;

 private:
  using cell_index = Eigen::Vector2i;  // column, row

  cell_index cell_of(const Eigen::Vector2d& position) const;
  std::span<const std::int32_t> members(int column, int row) const;

  std::vector<Eigen::Vector2d> positions_;  // pixels, by corner
  Eigen::Vector2d origin_ = Eigen::Vector2d::Zero();
  double pitch_ = 1;  // pixels
  cell_index count_ = cell_index::Ones();
  std::vector<std::size_t> starts_;    // where each cell begins in members_, and the end
  std::vector<std::int32_t> members_;  // corner indices, row by row of cells
};

}  // namespace ocpan

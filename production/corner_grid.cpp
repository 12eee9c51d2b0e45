#include "production/corner_grid.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace ocpan {
namespace {

constexpr double least_pitch = 1.0;  // pixels
// A cost is never less than the corner's distance, but for rounding.
constexpr double rounding = 1.0 + 1e-9;

double cost_along(const Eigen::Vector2d& offset, double ahead, const Eigen::Vector2d& direction) {
  return ahead + 5.0 * (offset - ahead * direction).norm();
}

}  // namespace

corner_grid::corner_grid(const std::vector<prod_corner>& corners) {
  for (const prod_corner& corner : corners) positions_.emplace_back(corner.x, corner.y);
  if (!positions_.empty()) {
    Eigen::Vector2d low = positions_.front(), high = low;
    for (const Eigen::Vector2d& p : positions_) {
      low = low.cwiseMin(p);
      high = high.cwiseMax(p);
    }
    // About one corner in a cell, and no more cells than a few times the corners.
    const Eigen::Vector2d extent = high - low;
    const double number = static_cast<double>(positions_.size());
    origin_ = low;
    pitch_ = std::max({least_pitch, std::sqrt(extent.prod() / number), extent.maxCoeff() / number});
    count_ = (extent / pitch_).cast<int>() + cell_index::Ones();
  }

  std::vector<std::size_t> cells;
  for (const Eigen::Vector2d& p : positions_) {
    const cell_index cell = cell_of(p);
    cells.push_back(static_cast<std::size_t>(cell.y() * count_.x() + cell.x()));
  }
  starts_.assign(static_cast<std::size_t>(count_.prod()) + 1, 0);
  for (const std::size_t cell : cells) ++starts_[cell + 1];
  std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
  members_.resize(positions_.size());
  std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    members_[next[cells[i]]++] = static_cast<std::int32_t>(i);
  }
}

// The cell of a position, or the one nearest to it if it lies outside.
corner_grid::cell_index corner_grid::cell_of(const Eigen::Vector2d& position) const {
  const Eigen::Vector2d last = (count_ - cell_index::Ones()).cast<double>();
  const Eigen::Vector2d cell = (position - origin_) / pitch_;
  return cell.cwiseMin(last).cwiseMax(0.0).cast<int>();
}

std::span<const std::int32_t> corner_grid::members(int column, int row) const {
  const auto cell = static_cast<std::size_t>(Eigen::Index{row} * count_.x() + column);
  return std::span(members_).subspan(starts_[cell], starts_[cell + 1] - starts_[cell]);
}

nearest_corner corner_grid::nearest_along(const Eigen::Vector2d& position,
                                          const Eigen::Vector2d& direction,
                                          std::span<const std::int32_t> excluded) const {
  nearest_corner best = {-1, std::numeric_limits<double>::max()};
  const auto consider = [&](std::int32_t index) {
    const Eigen::Vector2d offset = positions_[static_cast<std::size_t>(index)] - position;
    const double ahead = offset.dot(direction);
    if (ahead < 0) return;
    const double cost = cost_along(offset, ahead, direction);
    const bool better = cost < best.cost || (cost == best.cost && index < best.index);
    if (better && std::find(excluded.begin(), excluded.end(), index) == excluded.end()) {
      best = {index, cost};
    }
  };

  // Square rings of cells round the position's own. What lies in ring k is at least k - 1
  // pitches away.
  const cell_index centre = cell_of(position);
  const int rings = std::max(centre.maxCoeff(), (count_ - centre).maxCoeff() - 1);
  for (int ring = 0; ring <= rings; ++ring) {
    if (best.cost * rounding < (ring - 1) * pitch_) break;
    const int first_row = std::max(centre.y() - ring, 0);
    const int last_row = std::min(centre.y() + ring, count_.y() - 1);
    const int first_column = std::max(centre.x() - ring, 0);
    const int last_column = std::min(centre.x() + ring, count_.x() - 1);
    for (int row = first_row; row <= last_row; ++row) {
      const bool whole_row = std::abs(row - centre.y()) == ring;
      for (int column = first_column; column <= last_column; ++column) {
        if (!whole_row && std::abs(column - centre.x()) != ring) continue;
        for (const std::int32_t index : members(column, row)) consider(index);
      }
    }
  }
  return best;
}

}  // namespace ocpan

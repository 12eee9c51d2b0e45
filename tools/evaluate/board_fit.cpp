#include "tools/evaluate/board_fit.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Cholesky>
#include <Eigen/Geometry>

#include "model/projection.h"
#include "tools/evaluate/falling_steps.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;
using matrix6 = Eigen::Matrix<double, 6, 6>;
using vector6 = Eigen::Matrix<double, 6, 1>;

constexpr double huber_deviations = 3;
constexpr int reweightings = 4;

// The lengths of all residuals of a board, sighting by sighting.
Eigen::ArrayXd residual_lengths(const Matrix3Xd& points, const std::vector<sighting>& sightings,
                                const rigid_motion& rig_from_board) {
  const Matrix3Xd placed = rig_from_board * points;
  Eigen::ArrayXd lengths(points.cols() * static_cast<Index>(sightings.size()));
  Index first = 0;
  for (const sighting& seen : sightings) {
    lengths.segment(first, points.cols()) =
        residuals_of(seen, placed).colwise().norm().transpose().array();
    first += points.cols();
  }
  return lengths;
}

// One damped step of a board's pose.
rigid_motion stepped(const Matrix3Xd& points, const std::vector<sighting>& sightings,
                     const Eigen::ArrayXd& weights, const rigid_motion& pose, double damping) {
  const Matrix3Xd placed = pose * points;
  matrix6 normal = matrix6::Zero();
  vector6 gradient = vector6::Zero();
  const Index n = points.cols();
  for (std::size_t s = 0; s < sightings.size(); ++s) {
    const sighting_rows rows = rows_of(sightings[s], placed);
    for (Index i = 0; i < 2 * n; ++i) {
      const Index corner = i % n;
      const Vector3d by_position = rows.by_position.row(i).transpose();
      vector6 row;
      row << Vector3d(placed.col(corner) - pose.translation).cross(by_position), by_position;
      const double weight = weights(static_cast<Index>(s) * n + corner);
      normal += weight * row * row.transpose();
      gradient += weight * rows.residuals(i) * row;
    }
  }
  normal.diagonal() *= 1 + damping;
  return changed_about(pose, pose.translation, normal.ldlt().solve(gradient));
}

}  // namespace

Eigen::Matrix2Xd residuals_of(const sighting& seen, const Matrix3Xd& points) {
  Eigen::ArrayXd x, y;
  project_points(x, y, points, *seen.model, Vector3d::Zero(), Vector3d::Zero());
  Eigen::Matrix2Xd residuals = *seen.corners;
  residuals.row(0) -= x.matrix().transpose();
  residuals.row(1) -= y.matrix().transpose();
  return residuals;
}

sighting_rows rows_of(const sighting& seen, const Matrix3Xd& points) {
  const Index n = points.cols();
  Eigen::ArrayXd x, y;
  derivative_map dx, dy;
  project_points(x, y, dx, dy, points, *seen.model, Vector3d::Zero(), Vector3d::Zero(), true);
  sighting_rows rows{Eigen::VectorXd(2 * n), Eigen::Matrix<double, Eigen::Dynamic, 3>(2 * n, 3)};
  rows.residuals << seen.corners->row(0).transpose() - x.matrix(),
      seen.corners->row(1).transpose() - y.matrix();
  for (int k = 0; k < 3; ++k) {
    rows.by_position.col(k) << dx[T_0 + k].matrix(), dy[T_0 + k].matrix();
  }
  return rows;
}

double deviation_from_median(const Eigen::ArrayXd& lengths) {
  // The median of a Rayleigh distribution is sqrt(2 ln 2) deviations.
  constexpr double median_of_unit = 1.1774100225154747;
  constexpr double least_deviation = 0.01;  // pixels; noise-free corners have none
  std::vector<double> sorted(lengths.begin(), lengths.end());
  const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
  std::nth_element(sorted.begin(), middle, sorted.end());
  return std::max(*middle / median_of_unit, least_deviation);
}

Eigen::ArrayXd robust_weights(const Eigen::ArrayXd& lengths) {
  const double limit = huber_deviations * deviation_from_median(lengths);
  return (lengths > limit).select(limit / lengths, Eigen::ArrayXd::Ones(lengths.size()));
}

rigid_motion fitted_board(const Matrix3Xd& points, const std::vector<sighting>& sightings,
                          const rigid_motion& start) {
  if (!is_finite(start)) return start;
  rigid_motion pose = start;
  Eigen::ArrayXd weights =
      Eigen::ArrayXd::Ones(points.cols() * static_cast<Index>(sightings.size()));
  for (int i = 0; i <= reweightings; ++i) {
    pose = after_falling_steps(
        pose,
        [&](const rigid_motion& at) {
          return (weights * residual_lengths(points, sightings, at).square()).sum();
        },
        [&](const rigid_motion& at, double damping) {
          return stepped(points, sightings, weights, at, damping);
        });
    const Eigen::ArrayXd lengths = residual_lengths(points, sightings, pose);
    if (!lengths.allFinite()) break;
    weights = robust_weights(lengths);
    if (weights.minCoeff() == 1) break;
  }
  return pose;
}

double board_rms(const Matrix3Xd& points, const std::vector<sighting>& sightings,
                 const rigid_motion& rig_from_board) {
  return std::sqrt(residual_lengths(points, sightings, rig_from_board).square().mean());
}

}  // namespace ocpan

#include "tools/evaluate/pair_pose.h"

#include <cmath>

#include <Eigen/Cholesky>
#include <Eigen/Geometry>
#include <Eigen/LU>

#include "tools/evaluate/board_fit.h"
#include "tools/evaluate/falling_steps.h"
#include "tools/evaluate/rigid_motion.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix3d;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;
using matrix6 = Eigen::Matrix<double, 6, 6>;
using vector6 = Eigen::Matrix<double, 6, 1>;

constexpr std::size_t fewest_boards = 3;
constexpr int reweightings = 4;

// What the fit moves: where the boards are, and how the second camera sees the rig.
struct pair_state {
  rigid_motion seen;                 // the second camera sees seen * x where x is
  std::vector<rigid_motion> boards;  // board -> rig
};

struct pair_problem {
  const model_map& first;
  const model_map& second;
  const std::vector<pair_board>& boards;
  Vector3d second_centre;
};

// The weights of a pair's corners: per board those of the first camera, then the second's.
using pair_weights = std::vector<Eigen::ArrayXd>;

// The normal equations with the boards eliminated, and what gives their steps afterwards.
struct pair_equations {
  matrix6 normal = matrix6::Zero();
  vector6 gradient = vector6::Zero();
  struct board_part {
    matrix6 inverse;  // of the board's own block
    matrix6 cross;    // camera by board
    vector6 gradient;
  };
  std::vector<board_part> boards;
};

std::vector<Eigen::ArrayXd> lengths_of(const pair_problem& problem, const pair_state& state) {
  std::vector<Eigen::ArrayXd> lengths;
  for (std::size_t b = 0; b < problem.boards.size(); ++b) {
    const pair_board& board = problem.boards[b];
    const Matrix3Xd placed = state.boards[b] * *board.points;
    const auto first = residuals_of({&problem.first, board.first_corners}, placed);
    const auto second = residuals_of({&problem.second, board.second_corners}, state.seen * placed);
    Eigen::ArrayXd both(2 * placed.cols());
    both << first.colwise().norm().transpose().array(), second.colwise().norm().transpose().array();
    lengths.push_back(both);
  }
  return lengths;
}

double cost_of(const pair_problem& problem, const pair_weights& weights, const pair_state& state) {
  const std::vector<Eigen::ArrayXd> lengths = lengths_of(problem, state);
  double cost = 0;
  for (std::size_t b = 0; b < lengths.size(); ++b) cost += (weights[b] * lengths[b].square()).sum();
  return cost;
}

// The derivatives of a projection by a turn about a point and a shift of what it sees.
vector6 motion_row(const Vector3d& from_pivot, const Vector3d& by_position) {
  vector6 row;
  row << from_pivot.cross(by_position), by_position;
  return row;
}

pair_equations linearised(const pair_problem& problem, const pair_weights& weights,
                          const pair_state& state, double damping) {
  pair_equations equations;
  for (std::size_t b = 0; b < problem.boards.size(); ++b) {
    const pair_board& board = problem.boards[b];
    const Matrix3Xd placed = state.boards[b] * *board.points;
    const Matrix3Xd seen = state.seen * placed;
    const sighting_rows first = rows_of({&problem.first, board.first_corners}, placed);
    const sighting_rows second = rows_of({&problem.second, board.second_corners}, seen);
    const Index n = placed.cols();
    matrix6 own = matrix6::Zero();
    matrix6 cross = matrix6::Zero();
    vector6 gradient = vector6::Zero();
    for (Index i = 0; i < 2 * n; ++i) {
      const Index corner = i % n;
      const Vector3d arm = placed.col(corner) - state.boards[b].translation;
      const vector6 row_first = motion_row(arm, first.by_position.row(i).transpose());
      const Vector3d by_seen = second.by_position.row(i).transpose();
      const vector6 row_second = motion_row(arm, state.seen.rotation.transpose() * by_seen);
      const vector6 row_camera = motion_row(seen.col(corner) - problem.second_centre, by_seen);
      const double w_first = weights[b](corner);
      const double w_second = weights[b](n + corner);
      own += w_first * row_first * row_first.transpose() +
             w_second * row_second * row_second.transpose();
      gradient +=
          w_first * first.residuals(i) * row_first + w_second * second.residuals(i) * row_second;
      cross += w_second * row_camera * row_second.transpose();
      equations.normal += w_second * row_camera * row_camera.transpose();
      equations.gradient += w_second * second.residuals(i) * row_camera;
    }
    own.diagonal() *= 1 + damping;
    equations.boards.push_back({own.inverse(), cross, gradient});
  }
  equations.normal.diagonal() *= 1 + damping;
  for (const pair_equations::board_part& part : equations.boards) {
    equations.normal -= part.cross * part.inverse * part.cross.transpose();
    equations.gradient -= part.cross * part.inverse * part.gradient;
  }
  return equations;
}

pair_state stepped(const pair_problem& problem, const pair_weights& weights,
                   const pair_state& state, double damping) {
  const pair_equations equations = linearised(problem, weights, state, damping);
  const vector6 camera = equations.normal.ldlt().solve(equations.gradient);
  pair_state next = state;
  next.seen = changed_about(state.seen, problem.second_centre, camera);
  for (std::size_t b = 0; b < state.boards.size(); ++b) {
    const auto& part = equations.boards[b];
    const vector6 board = part.inverse * (part.gradient - part.cross.transpose() * camera);
    next.boards[b] = changed_about(state.boards[b], state.boards[b].translation, board);
  }
  return next;
}

Eigen::ArrayXd joined(const std::vector<Eigen::ArrayXd>& parts) {
  Index count = 0;
  for (const Eigen::ArrayXd& part : parts) count += part.size();
  Eigen::ArrayXd all(count);
  Index first = 0;
  for (const Eigen::ArrayXd& part : parts) {
    all.segment(first, part.size()) = part;
    first += part.size();
  }
  return all;
}

// The weights of all corners, by how the lengths of the whole pair spread.
pair_weights weights_for(const std::vector<Eigen::ArrayXd>& lengths) {
  const Eigen::ArrayXd all = robust_weights(joined(lengths));
  pair_weights weights;
  Index first = 0;
  for (const Eigen::ArrayXd& part : lengths) {
    weights.push_back(all.segment(first, part.size()));
    first += part.size();
  }
  return weights;
}

// A camera's own frame: right and down in its picture, and ahead.
Matrix3d camera_frame(const model_map& model) {
  const Vector3d ahead = direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
  const Vector3d right =
      (vector_of(model, H_0) - ahead.dot(vector_of(model, H_0)) * ahead).normalized();
  Matrix3d frame;
  frame << right, ahead.cross(right), ahead;
  return frame;
}

}  // namespace

relative_pose calibrated_pose(const model_map& first, const model_map& second) {
  return {turn_degrees(camera_frame(first).transpose() * camera_frame(second)),
          (vector_of(second, C_0) - vector_of(first, C_0)).norm()};
}

std::optional<pair_own_pose> fitted_pair(const model_map& first, const model_map& second,
                                         const std::vector<pair_board>& boards) {
  if (boards.size() < fewest_boards) return std::nullopt;
  const pair_problem problem{first, second, boards, vector_of(second, C_0)};
  pair_state state;
  for (const pair_board& board : boards) state.boards.push_back(motion_of(board.rig_from_board));
  pair_weights weights;
  for (const pair_board& board : boards) {
    weights.emplace_back(Eigen::ArrayXd::Ones(2 * board.points->cols()));
  }
  for (int i = 0; i <= reweightings; ++i) {
    state = after_falling_steps(
        state, [&](const pair_state& at) { return cost_of(problem, weights, at); },
        [&](const pair_state& at, double damping) {
          return stepped(problem, weights, at, damping);
        });
    const std::vector<Eigen::ArrayXd> lengths = lengths_of(problem, state);
    if (!joined(lengths).allFinite()) return std::nullopt;
    weights = weights_for(lengths);
  }

  const Eigen::ArrayXd lengths = joined(lengths_of(problem, state));
  const double freedom = 2 * joined(weights).sum() - 6 * static_cast<double>(boards.size()) - 6;
  const double variance = (joined(weights) * lengths.square()).sum() / std::max(1.0, freedom);
  const matrix6 covariance = variance * linearised(problem, weights, state, 0).normal.inverse();
  if (!covariance.allFinite()) return std::nullopt;

  const rigid_motion moved = inverse_of(state.seen);  // from the calibration's place to the own
  const Vector3d centre = moved * problem.second_centre;
  pair_own_pose pose;
  pose.own = {turn_degrees(camera_frame(first).transpose() * moved.rotation * camera_frame(second)),
              (centre - vector_of(first, C_0)).norm()};
  pose.turn_degrees = turn_degrees(moved.rotation);
  pose.shift = (centre - problem.second_centre).norm();
  pose.turn_deviation_degrees = std::sqrt(covariance.topLeftCorner<3, 3>().trace()) * 180 / pi;
  pose.shift_deviation = std::sqrt(covariance.bottomRightCorner<3, 3>().trace());
  pose.rms_pixels = std::sqrt(lengths.square().mean());
  pose.rotation = state.seen.rotation;
  pose.translation = state.seen.translation;
  return pose;
}

}  // namespace ocpan

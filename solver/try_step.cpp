#include "solver/try_step.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/LU>

#include "model/dense_svd.h"
#include "model/projection.h"
#include "model/resize.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

// The equations of the cameras alone, with the poses eliminated.
struct reduced_system {
  MatrixXd s;
  VectorXd b;
  std::vector<pose_matrix> pose_inverse;  // per shot, of its damped pose block
};

// Subtracts left right^T from a block, below the block's diagonal if it lies on that of the
// whole. The few columns of left and right are summed from the first on, one product at a
// time. A general product would spend more on arranging such narrow matrices than on them.
template <int columns>
void subtract_product(MatrixXd& whole, Index first_row, Index first_column,
                      const Eigen::Ref<const MatrixXd>& left,
                      const Eigen::Ref<const MatrixXd>& right) {
  const Index stride = left.outerStride();
  for (Index j = 0; j < right.rows(); ++j) {
    double factors[columns];
    for (int k = 0; k < columns; ++k) factors[k] = right(j, k);
    const Index skipped = first_row == first_column ? j : 0;
    double* __restrict out = &whole(first_row, first_column + j);
    const double* in = left.data();
    for (Index i = skipped; i < left.rows(); ++i) {
      double sum = 0;
      for (int k = 0; k < columns; ++k) sum += in[i + k * stride] * factors[k];
      out[i] -= sum;
    }
  }
}

void subtract_product(MatrixXd& whole, Index first_row, Index first_column,
                      const Eigen::Ref<const MatrixXd>& left,
                      const Eigen::Ref<const MatrixXd>& right) {
  static constexpr decltype(&subtract_product<1>) of_columns[] = {
      subtract_product<1>, subtract_product<2>, subtract_product<3>,
      subtract_product<4>, subtract_product<5>, subtract_product<6>};
  if (left.size() == 0) return;
  of_columns[left.cols() - 1](whole, first_row, first_column, left, right);
}

// What eliminating a shot needs room for.
struct elimination_scratch {
  MatrixXd weighted;  // B C^-1
  VectorXd shift;     // B C^-1 g
};

// Subtracts one shot's B C^-1 B^T and B C^-1 g, camera block by camera block. Of the
// symmetric matrix the lower triangle is enough.
void eliminate_shot(reduced_system& system, const shot_equations& shot, const pose_matrix& inverse,
                    const touched_cameras& touched, const column_layout& layout,
                    elimination_scratch& scratch) {
  resize(scratch.weighted, shot.b.rows(), inverse.cols());
  resize(scratch.shift, shot.b.rows(), 1);
  scratch.weighted.noalias() = shot.b * inverse;
  scratch.shift.noalias() = scratch.weighted * shot.g;
  for (std::size_t i = 0; i < touched.cameras.size(); ++i) {
    const Index ni = layout.columns_of(touched.cameras[i]);
    const Index to_i = layout.first[touched.cameras[i]];
    system.b.segment(to_i, ni) -= scratch.shift.segment(touched.local_first[i], ni);
    for (std::size_t j = 0; j < touched.cameras.size(); ++j) {
      const Index nj = layout.columns_of(touched.cameras[j]);
      const Index to_j = layout.first[touched.cameras[j]];
      if (to_j > to_i) continue;
      subtract_product(system.s, to_i, to_j,
                       scratch.weighted.middleRows(touched.local_first[i], ni),
                       shot.b.middleRows(touched.local_first[j], nj));
    }
  }
}

reduced_system reduce(const solver_problem& problem, const linearisation& at, double damping) {
  const column_layout& layout = problem.layout;
  reduced_system system{at.a, at.g, {}};
  system.s.diagonal().array() += damping;
  system.pose_inverse.reserve(at.shots.size());
  elimination_scratch scratch;
  for (std::size_t i = 0; i < at.shots.size(); ++i) {
    pose_matrix damped = at.shots[i].c;
    damped.diagonal().array() += damping;
    system.pose_inverse.push_back(Eigen::PartialPivLU<pose_matrix>(damped).inverse());
    eliminate_shot(system, at.shots[i], system.pose_inverse.back(),
                   problem.touched[problem.shots[i].group], layout, scratch);
  }
  system.s.triangularView<Eigen::StrictlyUpper>() = system.s.transpose();
  return system;
}

VectorXd camera_step(const reduced_system& system) {
  if (system.b.size() == 0) return {};
  if (!system.s.allFinite() || !system.b.allFinite()) {
    return VectorXd::Constant(system.b.size(), std::numeric_limits<double>::quiet_NaN());
  }
  return Eigen::BDCSVD<MatrixXd>(system.s, Eigen::ComputeThinU | Eigen::ComputeThinV)
      .solve(system.b);
}

void move_models(rig& models, const column_layout& layout, const VectorXd& step,
                 const VectorXd& scales) {
  for (std::size_t j = 0; j < layout.columns.size(); ++j) {
    const camera_column& column = layout.columns[j];
    const Index k = static_cast<Index>(j);
    models[column.camera][column.key] += step[k] / scales[k];
  }
  for (model_map& model : models) model[L] = law_from_lambda(model[LAMBDA]);
}

void move_pose(ModelPose& pose, const column_layout& layout, const pose_vector& step,
               const pose_vector& scales) {
  for (std::size_t j = 0; j < layout.pose.size(); ++j) {
    const Index k = static_cast<Index>(j);
    const double delta = step[k] / scales[k];
    const pose_param_name key = layout.pose[j];
    if (key < T_0) {
      pose.rotation[key - R_0] += delta;
    } else {
      pose.translation[key - T_0] += delta;
    }
  }
}

solver_state moved_state(const solver_problem& problem, const solver_state& state,
                         const linearisation& at, const column_scales& scales, double damping) {
  const column_layout& layout = problem.layout;
  const reduced_system system = reduce(problem, at, damping);
  const VectorXd step = camera_step(system);
  solver_state moved = state;
  move_models(moved.models, layout, step, scales.camera);
  for (std::size_t i = 0; i < at.shots.size(); ++i) {
    const touched_cameras& touched = problem.touched[problem.shots[i].group];
    pose_vector right = at.shots[i].g;
    for (std::size_t t = 0; t < touched.cameras.size(); ++t) {
      const Index n = layout.columns_of(touched.cameras[t]);
      right -= at.shots[i].b.middleRows(touched.local_first[t], n).transpose() *
               step.segment(layout.first[touched.cameras[t]], n);
    }
    const pose_vector pose_step = system.pose_inverse[i] * right;
    move_pose(moved.poses[i], layout, pose_step, scales.pose);
  }
  return moved;
}

// The sum of a state's squared residuals, weights as they are; then, with reject_now,
// takes out the points that are too far off.
double squared_error(const solver_problem& problem, solver_state& state, double sigma,
                     bool reject_now) {
  const double unit = std::max(1.0, sigma);
  double sum = 0;
  const std::vector<camera_frame> cameras(state.models.begin(), state.models.end());
  Eigen::ArrayXd x, y, squares;
  for (std::size_t i = 0; i < problem.shots.size(); ++i) {
    const shot_reference& shot = problem.shots[i];
    const view_group& group = problem.groups[shot.group];
    const Index n = group.board_points.cols();
    for (std::size_t entry = 0; entry < group.cameras.size(); ++entry) {
      project_points(x, y, group.board_points, cameras[group.cameras[entry]],
                     state.poses[i].rotation, state.poses[i].translation);
      auto weights = state.weights.segment(shot.first_weight + static_cast<Index>(entry) * n, n);
      const Eigen::Matrix2Xd& observed = group.shots[shot.shot][entry];
      resize(squares, n, 1);
      squares = (weights * (observed.row(0).transpose().array() - x)).square() +
                (weights * (observed.row(1).transpose().array() - y)).square();
      sum += squares.sum();
      if (!reject_now) continue;
      for (Index k = 0; k < n; ++k) {
        const bool kept = problem.settings.reject_limit > squares[k] / (unit * unit);
        if (!kept) weights[k] = 0;
      }
    }
  }
  return sum;
}

}  // namespace

trial_step try_step(const solver_problem& problem, const solver_state& state,
                    const linearisation& at, const column_scales& scales, double damping,
                    double sigma, bool reject_now) {
  trial_step trial;
  trial.state = moved_state(problem, state, at, scales, damping);
  trial.squared_error = squared_error(problem, trial.state, sigma, reject_now);
  trial.cost = trial.squared_error / (sigma * sigma);
  return trial;
}

std::optional<trial_step> first_falling_step(const solver_problem& problem,
                                             const solver_state& state, const linearisation& at,
                                             const column_scales& scales, double& damping,
                                             double sigma, bool reject_now) {
  constexpr double most_damping = 1e10;
  if (std::isnan(at.cost)) return std::nullopt;  // nothing is strictly below it
  for (;;) {
    trial_step trial = try_step(problem, state, at, scales, damping, sigma, reject_now);
    if (trial.cost < at.cost) return trial;
    if (damping > most_damping) return std::nullopt;
    damping *= 1.5;
  }
}

}  // namespace ocpan

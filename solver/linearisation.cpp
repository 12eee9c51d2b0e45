#include "solver/linearisation.h"

#include <algorithm>
#include <cmath>

#include "model/projection.h"
#include "model/resize.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

// One view's rows [camera columns, pose columns, residual], x rows above y rows, and the
// products of these columns with one another.
struct view_rows {
  Eigen::ArrayXd x, y;
  derivative_map dx, dy;
  MatrixXd rows;
  MatrixXd products;
};

void fill_rows(view_rows& view, const solver_problem& problem, const solver_state& state,
               const std::vector<camera_frame>& cameras, const shot_reference& shot,
               std::size_t shot_index, std::size_t entry, double sigma) {
  const view_group& group = problem.groups[shot.group];
  const column_layout& layout = problem.layout;
  const std::size_t camera = group.cameras[entry];
  const Index n = group.board_points.cols();
  const ModelPose& pose = state.poses[shot_index];
  project_points(view.x, view.y, view.dx, view.dy, group.board_points, cameras[camera],
                 pose.rotation, pose.translation, true);

  const Eigen::ArrayXd scale =
      state.weights.segment(shot.first_weight + static_cast<Index>(entry) * n, n) / sigma;
  const Index camera_columns = layout.columns_of(camera);
  resize(view.rows, 2 * n, camera_columns + layout.pose_columns() + 1);
  Index column = 0;
  const auto add = [&](int key) {
    view.rows.col(column).head(n) = (scale * view.dx[key]).matrix();
    view.rows.col(column).tail(n) = (scale * view.dy[key]).matrix();
    ++column;
  };
  for (Index k = 0; k < camera_columns; ++k) {
    add(layout.columns[static_cast<std::size_t>(layout.first[camera] + k)].key);
  }
  for (const pose_param_name key : layout.pose) add(key);
  const Eigen::Matrix2Xd& observed = group.shots[shot.shot][entry];
  view.rows.col(column).head(n) = (scale * (observed.row(0).transpose().array() - view.x)).matrix();
  view.rows.col(column).tail(n) = (scale * (observed.row(1).transpose().array() - view.y)).matrix();
}

// Adds one view's products to the equations; gives its squared residuals.
double add_view(linearisation& at, shot_equations& equations, view_rows& view,
                const column_layout& layout, std::size_t camera, Index local_first) {
  const Index k = view.rows.cols();
  resize(view.products, k, k);
  view.products.setZero();
  view.products.selfadjointView<Eigen::Lower>().rankUpdate(view.rows.transpose());
  const Index nc = layout.columns_of(camera), np = layout.pose_columns();
  const Index first = layout.first[camera];
  at.a.block(first, first, nc, nc).triangularView<Eigen::Lower>() +=
      view.products.topLeftCorner(nc, nc);
  at.g.segment(first, nc) += view.products.row(nc + np).head(nc).transpose();
  equations.c.triangularView<Eigen::Lower>() += view.products.block(nc, nc, np, np);
  equations.b.middleRows(local_first, nc) += view.products.block(nc, 0, np, nc).transpose();
  equations.g += view.products.row(nc + np).segment(nc, np).transpose();
  return view.products(nc + np, nc + np);
}

void add_pose_terms(shot_equations& equations, const solver_problem& problem, const ModelPose& pose,
                    double divisor) {
  const Index np = problem.layout.pose_columns();
  pose_vector row(np);
  for (const pose_term& term : problem.pose_terms) {
    for (Index k = 0; k < np; ++k) {
      row[k] = term.derivative(pose, problem.layout.pose[static_cast<std::size_t>(k)]) / divisor;
    }
    const double residual = term.value(pose) / divisor;
    equations.c.triangularView<Eigen::Lower>() += row * row.transpose();
    equations.g += row * residual;
  }
}

void add_camera_terms(linearisation& at, const solver_problem& problem, const rig& models,
                      double divisor) {
  const Index columns = problem.layout.camera_columns();
  std::vector<Index> touched;
  VectorXd row(columns);
  for (const constraint_term& term : problem.camera_terms) {
    touched.clear();
    for (Index j = 0; j < columns; ++j) {
      const camera_column& column = problem.layout.columns[static_cast<std::size_t>(j)];
      row[j] = term.derivative(models, column.camera, column.key) / divisor;
      if (row[j] != 0) touched.push_back(j);  // not-a-number too
    }
    const double residual = term.value(models) / divisor;
    for (const Index i : touched) {
      at.g[i] += row[i] * residual;
      for (const Index j : touched) {
        if (j <= i) at.a(i, j) += row[i] * row[j];
      }
    }
  }
}

// A square that is not a number leaves its scale.
template <typename Scales, typename Squares>
void grow(Scales& scales, const Squares& squares) {
  for (Index i = 0; i < scales.size(); ++i) {
    scales[i] = std::max(scales[i], std::sqrt(squares[i]));
  }
}

// Grows the scales to the norms of the columns and divides the equations by them. Only
// the lower triangles are filled when this begins; all is filled when it ends.
void scale_columns(linearisation& at, const solver_problem& problem, column_scales& scales) {
  grow(scales.camera, at.a.diagonal());
  pose_vector pose_squares = pose_vector::Zero(problem.layout.pose_columns());
  for (const shot_equations& shot : at.shots) pose_squares += shot.c.diagonal();
  grow(scales.pose, pose_squares);

  const VectorXd camera = scales.camera.cwiseInverse();
  const pose_vector pose = scales.pose.cwiseInverse();
  at.a = camera.asDiagonal() * at.a * camera.asDiagonal();
  at.a.triangularView<Eigen::StrictlyUpper>() = at.a.transpose();
  at.g = camera.asDiagonal() * at.g;
  for (std::size_t i = 0; i < at.shots.size(); ++i) {
    shot_equations& shot = at.shots[i];
    shot.c = pose.asDiagonal() * shot.c * pose.asDiagonal();
    shot.c.triangularView<Eigen::StrictlyUpper>() = shot.c.transpose();
    shot.g = pose.asDiagonal() * shot.g;
    const touched_cameras& touched = problem.touched[problem.shots[i].group];
    for (std::size_t t = 0; t < touched.cameras.size(); ++t) {
      const Index n = problem.layout.columns_of(touched.cameras[t]);
      auto block = shot.b.middleRows(touched.local_first[t], n);
      block = camera.segment(problem.layout.first[touched.cameras[t]], n).asDiagonal() * block *
              pose.asDiagonal();
    }
  }
}

}  // namespace

column_scales::column_scales(const column_layout& layout) {
  constexpr double least = 1e-8;
  camera = VectorXd::Constant(layout.camera_columns(), least);
  pose = pose_vector::Constant(layout.pose_columns(), least);
}

linearisation linearise(const solver_problem& problem, const solver_state& state, double sigma,
                        column_scales& scales) {
  const column_layout& layout = problem.layout;
  const double divisor = problem.settings.terms_in_sigma ? sigma : 1.0;
  linearisation at;
  at.a.setZero(layout.camera_columns(), layout.camera_columns());
  at.g.setZero(layout.camera_columns());
  at.shots.resize(problem.shots.size());
  at.sample_count = 2 * state.weights.sum();
  const std::vector<camera_frame> cameras(state.models.begin(), state.models.end());
  view_rows view;
  for (std::size_t i = 0; i < problem.shots.size(); ++i) {
    const shot_reference& shot = problem.shots[i];
    const view_group& group = problem.groups[shot.group];
    const touched_cameras& touched = problem.touched[shot.group];
    shot_equations& equations = at.shots[i];
    equations.c.setZero(layout.pose_columns(), layout.pose_columns());
    equations.b.setZero(touched.columns, layout.pose_columns());
    equations.g.setZero(layout.pose_columns());
    for (std::size_t entry = 0; entry < group.cameras.size(); ++entry) {
      fill_rows(view, problem, state, cameras, shot, i, entry, sigma);
      at.cost += add_view(at, equations, view, layout, group.cameras[entry],
                          touched.local_first[touched.entry[entry]]);
    }
    add_pose_terms(equations, problem, state.poses[i], divisor);
  }
  add_camera_terms(at, problem, state.models, divisor);
  scale_columns(at, problem, scales);
  return at;
}

}  // namespace ocpan

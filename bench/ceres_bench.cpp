// The rig's solve beside a Ceres bundle adjustment of the same residuals, soft terms and start,
// on one thread, with the derivatives of our own projection.

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <iostream>
#include <sstream>

#include <benchmark/benchmark.h>
#include <ceres/ceres.h>

#include "bench/simulated_boards.h"
#include "calibration/calibration_stages.h"
#include "calibration/pair_alignment.h"
#include "calibration/rig_constraints.h"
#include "calibration/rig_placement.h"
#include "model/projection.h"
#include "solver/solve_stage.h"
#include "solver/stage_lists.h"
#include "solver/try_step.h"

namespace ocpan {
namespace {

constexpr double noise = 0.045;  // pixels, what residuals are divided by
constexpr int camera_parameters = 17;
constexpr int pose_parameters = 6;

parameter_name key_of(int column) {
  return column < L ? static_cast<parameter_name>(column) : LAMBDA;
}

void read_camera(model_map& model, const double* values) {
  for (int k = 0; k < camera_parameters; ++k) model[key_of(k)] = values[k];
  model[L] = law_from_lambda(model[LAMBDA]);
}

// One camera's view of one board.
class view_cost
    : public ceres::SizedCostFunction<ceres::DYNAMIC, camera_parameters, pose_parameters> {
 public:
  view_cost(const Eigen::Matrix3Xd& points, const Eigen::Matrix2Xd& observed)
      : points_(points), observed_(observed) {
    set_num_residuals(static_cast<int>(2 * points.cols()));
  }

  bool Evaluate(double const* const* parameters, double* residuals,
                double** jacobians) const override {
    thread_local Eigen::ArrayXd x, y;
    thread_local derivative_map dx, dy;
    model_map model;
    read_camera(model, parameters[0]);
    const Eigen::Map<const Eigen::Vector3d> rotation(parameters[1]), translation(parameters[1] + 3);
    project_points(x, y, dx, dy, points_, model, rotation, translation, jacobians != nullptr);
    const Eigen::Index n = points_.cols();
    Eigen::Map<Eigen::ArrayXd> out(residuals, 2 * n);
    out.head(n) = (x - observed_.row(0).transpose().array()) / noise;
    out.tail(n) = (y - observed_.row(1).transpose().array()) / noise;
    if (!jacobians) return true;
    fill(jacobians[0], camera_parameters, dx, dy, [](int k) { return int{key_of(k)}; });
    fill(jacobians[1], pose_parameters, dx, dy, [](int k) { return int{R_0} + k; });
    return true;
  }

 private:
  template <typename Key>
  static void fill(double* jacobian, int columns, const derivative_map& dx,
                   const derivative_map& dy, Key key) {
    if (!jacobian) return;
    using row_major = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    const Eigen::Index n = dx.points();
    Eigen::Map<row_major> out(jacobian, 2 * n, columns);
    for (int k = 0; k < columns; ++k) {
      out.col(k).head(n) = (dx[key(k)] / noise).matrix();
      out.col(k).tail(n) = (dy[key(k)] / noise).matrix();
    }
  }

  const Eigen::Matrix3Xd& points_;
  const Eigen::Matrix2Xd& observed_;
};

// A soft term over all cameras.
class term_cost : public ceres::CostFunction {
 public:
  term_cost(const constraint_term& term, std::size_t cameras) : term_(term) {
    set_num_residuals(1);
    mutable_parameter_block_sizes()->assign(cameras, camera_parameters);
  }

  bool Evaluate(double const* const* parameters, double* residuals,
                double** jacobians) const override {
    rig models(parameter_block_sizes().size());
    for (std::size_t c = 0; c < models.size(); ++c) read_camera(models[c], parameters[c]);
    residuals[0] = -term_.value(models);
    if (!jacobians) return true;
    for (std::size_t c = 0; c < models.size(); ++c) {
      if (!jacobians[c]) continue;
      for (int k = 0; k < camera_parameters; ++k) {
        jacobians[c][k] = term_.derivative(models, c, key_of(k));
      }
    }
    return true;
  }

 private:
  const constraint_term& term_;
};

// Everything as it stands ahead of Step 4: the rig after Step 3.
struct step_4_start {
  step_4_start(int cameras, int frames) : boards(preset_of(cameras), frames) {
    if (!boards.problem.empty()) return;
    constraints = rig_constraints(boards.details);
    std::ostringstream lines;
    std::streambuf* const shown = std::cout.rdbuf(lines.rdbuf());
    rig initial;
    for (const camera_details& camera : boards.details) initial.push_back(initial_model(camera));
    std::vector<view_group> lenses = single_camera_groups(boards.sets, boards.frames, initial);
    run_report report;
    models = initial;
    solve_settings settings;
    solve_stage(report, models, lenses, models, lenses, free_for_lenses(models.size()),
                free_poses(), constraints, {}, settings);
    models = place_cameras(models, collect_pair_points(boards.sets, boards.frames, models));
    placed = models;
    groups = shared_board_groups(boards.sets, boards.frames, models).groups;
    placed_groups = groups;
    settings.reject = true;
    solve_stage(report, models, groups, models, groups, free_for_rig(models.size()), free_poses(),
                constraints, {}, settings);
    std::cout.rdbuf(shown);
  }
  simulated_boards boards;
  std::vector<constraint_term> constraints;
  rig placed, models;  // ahead of Step 3's solve, and behind it
  std::vector<view_group> placed_groups, groups;
};

double image_rms(const rig& models, const std::vector<view_group>& groups) {
  double sum = 0, count = 0;
  Eigen::ArrayXd x, y;
  for (const view_group& group : groups) {
    for (std::size_t shot = 0; shot < group.shots.size(); ++shot) {
      for (std::size_t k = 0; k < group.cameras.size(); ++k) {
        project_points(x, y, group.board_points, models[group.cameras[k]],
                       group.poses[shot].rotation, group.poses[shot].translation);
        const Eigen::Matrix2Xd& seen = group.shots[shot][k];
        sum += (x - seen.row(0).transpose().array()).square().sum() +
               (y - seen.row(1).transpose().array()).square().sum();
        count += 2.0 * static_cast<double>(x.size());
      }
    }
  }
  return std::sqrt(sum / count);
}

// The same adjustment for Ceres.
class ceres_adjustment {
 public:
  ceres_adjustment(const rig& models, const std::vector<view_group>& groups,
                   const std::vector<constraint_term>& constraints)
      : models_(models), groups_(groups) {
    values_.resize(models.size());
    std::vector<double*> cameras;
    const auto free = free_for_all(models.size());
    for (std::size_t c = 0; c < models.size(); ++c) {
      for (int k = 0; k < camera_parameters; ++k) {
        values_[c][static_cast<std::size_t>(k)] = key_of(k) == LAMBDA
                                                      ? lambda_from_law(value_of(models[c], L))
                                                      : value_of(models[c], key_of(k));
      }
      cameras.push_back(values_[c].data());
      problem_.AddParameterBlock(cameras[c], camera_parameters, held(free[c]));
    }
    add_views();
    for (const constraint_term& term : constraints) {
      problem_.AddResidualBlock(new term_cost(term, models.size()), nullptr, cameras);
    }
  }

  // Runs to Ceres' own end, or with to_the_last just as many iterations.
  ceres::Solver::Summary solve(ceres::LinearSolverType type, int most_iterations,
                               bool to_the_last) {
    ceres::Solver::Options options;
    if (to_the_last) {
      options.function_tolerance = options.gradient_tolerance = options.parameter_tolerance = 0;
    }
    options.linear_solver_type = type;
    if (type == ceres::ITERATIVE_SCHUR) options.preconditioner_type = ceres::SCHUR_JACOBI;
    options.num_threads = 1;
    options.max_num_iterations = most_iterations;
    options.logging_type = ceres::SILENT;
    // The poses go first.
    options.linear_solver_ordering = std::make_shared<ceres::ParameterBlockOrdering>();
    for (auto& pose : poses_) options.linear_solver_ordering->AddElementToGroup(pose.data(), 0);
    for (auto& camera : values_)
      options.linear_solver_ordering->AddElementToGroup(camera.data(), 1);
    ceres::Solver::Summary summary;
    ceres::Solve(options, &problem_, &summary);
    return summary;
  }

  double rms() const {
    rig models = models_;
    for (std::size_t c = 0; c < models.size(); ++c) read_camera(models[c], values_[c].data());
    std::vector<view_group> groups = groups_;
    std::size_t next = 0;
    for (view_group& group : groups) {
      for (ModelPose& pose : group.poses) {
        const auto& values = poses_[next++];
        pose.rotation = {values[0], values[1], values[2]};
        pose.translation = {values[3], values[4], values[5]};
      }
    }
    return image_rms(models, groups);
  }

 private:
  static ceres::Manifold* held(const std::vector<parameter_name>& free) {
    std::vector<int> constant;
    for (int k = 0; k < camera_parameters; ++k) {
      const parameter_name key = key_of(k) == LAMBDA ? L : key_of(k);
      if (std::find(free.begin(), free.end(), key) == free.end()) constant.push_back(k);
    }
    if (constant.empty()) return nullptr;
    return new ceres::SubsetManifold(camera_parameters, constant);
  }

  void add_views() {
    std::size_t shots = 0;
    for (const view_group& group : groups_) shots += group.shots.size();
    poses_.reserve(shots);  // Ceres keeps their addresses
    for (const view_group& group : groups_) {
      for (std::size_t shot = 0; shot < group.shots.size(); ++shot) {
        const ModelPose& pose = group.poses[shot];
        auto& values = poses_.emplace_back();
        for (std::size_t k = 0; k < 3; ++k) {
          values[k] = pose.rotation[static_cast<Eigen::Index>(k)];
          values[k + 3] = pose.translation[static_cast<Eigen::Index>(k)];
        }
        for (std::size_t k = 0; k < group.cameras.size(); ++k) {
          problem_.AddResidualBlock(new view_cost(group.board_points, group.shots[shot][k]),
                                    nullptr, values_[group.cameras[k]].data(), values.data());
        }
      }
    }
  }

  const rig& models_;
  const std::vector<view_group>& groups_;
  std::vector<std::array<double, camera_parameters>> values_;
  std::vector<std::array<double, pose_parameters>> poses_;
  ceres::Problem problem_;
};

// Processor time, which other programs on the machine don't disturb much.
double processor_seconds() {
  return static_cast<double>(std::clock()) / static_cast<double>(CLOCKS_PER_SEC);
}

// One linearisation and one trial, the mean of ten.
void rig_iteration_ours(benchmark::State& state) {
  const step_4_start start(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  if (!start.boards.problem.empty()) return state.SkipWithError(start.boards.problem.c_str());
  const solve_settings settings;
  const solver_problem problem = make_problem(start.groups, free_for_all(start.models.size()),
                                              free_poses(), start.constraints, {}, settings);
  const solver_state at_start = start_state(problem, start.models);
  for (auto _ : state) {
    column_scales scales(problem.layout);
    const linearisation at = linearise(problem, at_start, noise, scales);
    benchmark::DoNotOptimize(try_step(problem, at_start, at, scales, 0.01, noise, false).cost);
  }
}

// What no iteration goes without, ours or Ceres': each view projected once with derivatives
// and once without.
void rig_iteration_projections(benchmark::State& state) {
  const step_4_start start(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  if (!start.boards.problem.empty()) return state.SkipWithError(start.boards.problem.c_str());
  const std::vector<camera_frame> cameras(start.models.begin(), start.models.end());
  Eigen::ArrayXd x, y;
  derivative_map dx, dy;
  for (auto _ : state) {
    for (const view_group& group : start.groups) {
      for (const ModelPose& pose : group.poses) {
        for (const std::size_t camera : group.cameras) {
          project_points(x, y, dx, dy, group.board_points, cameras[camera], pose.rotation,
                         pose.translation, true);
          project_points(x, y, group.board_points, cameras[camera], pose.rotation,
                         pose.translation);
        }
      }
    }
    benchmark::DoNotOptimize(dx[C_0].data());
  }
}

// Ceres' time beyond its preparations, divided by its iterations, of which each linearises and
// tries once.
void rig_iteration_ceres(benchmark::State& state, ceres::LinearSolverType type) {
  const step_4_start start(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  if (!start.boards.problem.empty()) return state.SkipWithError(start.boards.problem.c_str());
  for (auto _ : state) {
    ceres_adjustment adjustment(start.models, start.groups, start.constraints);
    const double begin = processor_seconds();
    adjustment.solve(type, 0, true);  // its preparations and the first linearisation
    const double prepared = processor_seconds();
    const auto summary = adjustment.solve(type, 10, true);
    const double end = processor_seconds();
    const int steps = summary.num_successful_steps + summary.num_unsuccessful_steps - 1;
    state.counters["steps"] = steps;
    state.SetIterationTime(((end - prepared) - (prepared - begin)) / std::max(1, steps));
  }
}
void rig_iteration_ceres_dense(benchmark::State& state) {
  rig_iteration_ceres(state, ceres::DENSE_SCHUR);
}
void rig_iteration_ceres_iterative(benchmark::State& state) {
  rig_iteration_ceres(state, ceres::ITERATIVE_SCHUR);
}

// Step 4's solve to its own end.
void rig_step_4_ours(benchmark::State& state) {
  const step_4_start start(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  if (!start.boards.problem.empty()) return state.SkipWithError(start.boards.problem.c_str());
  solve_settings settings;
  settings.reject = true;
  rig models;
  std::vector<view_group> groups;
  for (auto _ : state) {
    run_report report;
    solve_stage(report, models, groups, start.models, start.groups,
                free_for_all(start.models.size()), free_poses(), start.constraints, {}, settings);
  }
  state.counters["rms"] = image_rms(models, groups);
}

// The solves of Steps 3 and 4 to their ends.
void rig_steps_3_and_4_ours(benchmark::State& state) {
  const step_4_start start(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  if (!start.boards.problem.empty()) return state.SkipWithError(start.boards.problem.c_str());
  solve_settings settings;
  settings.reject = true;
  rig models;
  std::vector<view_group> groups;
  for (auto _ : state) {
    run_report report;
    const std::size_t cameras = start.placed.size();
    solve_stage(report, models, groups, start.placed, start.placed_groups, free_for_rig(cameras),
                free_poses(), start.constraints, {}, settings);
    solve_stage(report, models, groups, models, groups, free_for_all(cameras), free_poses(),
                start.constraints, {}, settings);
  }
  state.counters["rms"] = image_rms(models, groups);
}

// Ceres from the same start to its own end.
void rig_whole_ceres(benchmark::State& state, bool from_step_4, ceres::LinearSolverType type) {
  const step_4_start start(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  if (!start.boards.problem.empty()) return state.SkipWithError(start.boards.problem.c_str());
  double rms = 0;
  for (auto _ : state) {
    const double begin = processor_seconds();
    ceres_adjustment adjustment(from_step_4 ? start.models : start.placed,
                                from_step_4 ? start.groups : start.placed_groups,
                                start.constraints);
    adjustment.solve(type, 200, false);
    state.SetIterationTime(processor_seconds() - begin);
    rms = adjustment.rms();
  }
  state.counters["rms"] = rms;
}
void rig_step_4_ceres_dense(benchmark::State& state) {
  rig_whole_ceres(state, true, ceres::DENSE_SCHUR);
}
void rig_step_4_ceres_iterative(benchmark::State& state) {
  rig_whole_ceres(state, true, ceres::ITERATIVE_SCHUR);
}
void rig_steps_3_and_4_ceres_dense(benchmark::State& state) {
  rig_whole_ceres(state, false, ceres::DENSE_SCHUR);
}

void sizes(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"cameras", "frames"})->Unit(benchmark::kMillisecond);
  for (const int cameras : {2, 4, 8}) {
    for (const int frames : {20, 100}) bench->Args({cameras, frames});
  }
}

BENCHMARK(rig_iteration_ours)->Apply(sizes);
BENCHMARK(rig_iteration_projections)->Apply(sizes);
BENCHMARK(rig_iteration_ceres_dense)->Apply(sizes)->UseManualTime()->Iterations(4);
BENCHMARK(rig_iteration_ceres_iterative)->Apply(sizes)->UseManualTime()->Iterations(4);
BENCHMARK(rig_step_4_ours)->Apply(sizes)->Iterations(1);
BENCHMARK(rig_step_4_ceres_dense)->Apply(sizes)->UseManualTime()->Iterations(1);
BENCHMARK(rig_step_4_ceres_iterative)->Apply(sizes)->UseManualTime()->Iterations(1);
BENCHMARK(rig_steps_3_and_4_ours)->Apply(sizes)->Iterations(1);
BENCHMARK(rig_steps_3_and_4_ceres_dense)->Apply(sizes)->UseManualTime()->Iterations(1);

}  // namespace
}  // namespace ocpan

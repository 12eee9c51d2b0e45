#include "solver/problem.h"

#include <algorithm>

namespace ocpan {
namespace {

touched_cameras touched_by(const view_group& group, const column_layout& layout) {
  touched_cameras touched;
  for (const std::size_t camera : group.cameras) {
    const auto known = std::find(touched.cameras.begin(), touched.cameras.end(), camera);
    touched.entry.push_back(static_cast<std::size_t>(known - touched.cameras.begin()));
    if (known != touched.cameras.end()) continue;
    touched.cameras.push_back(camera);
    touched.local_first.push_back(touched.columns);
    touched.columns += layout.columns_of(camera);
  }
  return touched;
}

}  // namespace

column_layout number_columns(const std::vector<std::vector<parameter_name>>& free_params,
                             const std::vector<pose_param_name>& free_pose) {
  column_layout layout;
  layout.pose = free_pose;
  for (std::size_t camera = 0; camera < free_params.size(); ++camera) {
    layout.first.push_back(layout.camera_columns());
    for (const parameter_name key : free_params[camera]) {
      layout.columns.push_back({camera, key == L ? LAMBDA : key});
    }
  }
  layout.first.push_back(layout.camera_columns());
  return layout;
}

solver_problem make_problem(const std::vector<view_group>& groups,
                            const std::vector<std::vector<parameter_name>>& free_params,
                            const std::vector<pose_param_name>& free_pose,
                            const std::vector<constraint_term>& camera_terms,
                            const std::vector<pose_term>& pose_terms,
                            const solve_settings& settings) {
  solver_problem problem{
      groups, camera_terms, pose_terms, settings, number_columns(free_params, free_pose),
      {},     {},           0};
  for (std::size_t g = 0; g < groups.size(); ++g) {
    const view_group& group = groups[g];
    problem.touched.push_back(touched_by(group, problem.layout));
    for (std::size_t shot = 0; shot < group.shots.size(); ++shot) {
      problem.shots.push_back({g, shot, problem.weight_count});
      problem.weight_count +=
          static_cast<Eigen::Index>(group.cameras.size()) * group.board_points.cols();
    }
  }
  return problem;
}

solver_state start_state(const solver_problem& problem, const rig& models) {
  solver_state state;
  state.models = models;
  for (model_map& model : state.models) {
    for (int key = 0; key < parameter_count; ++key) model[static_cast<parameter_name>(key)];
    model[LAMBDA] = lambda_from_law(model[L]);
  }
  for (const shot_reference& shot : problem.shots) {
    state.poses.push_back(problem.groups[shot.group].poses[shot.shot]);
  }
  state.weights = Eigen::ArrayXd::Ones(problem.weight_count);
  return state;
}

}  // namespace ocpan

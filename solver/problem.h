#pragma once

#include <cstddef>
#include <vector>

#include <Eigen/Core>

#include "model/constraint_terms.h"
#include "model/parameters.h"
#include "model/pose.h"
#include "solver/solve_stage.h"
#include "solver/view_group.h"

namespace ocpan {

// A free camera parameter. key is never L: the solver moves LAMBDA in its place.
struct camera_column {
  std::size_t camera;
  parameter_name key;
};

// How the unknowns are numbered: the cameras' free parameters in one run, camera by
// camera in list order, and the free pose parameters, from 0 anew for each shot.
struct column_layout {
  std::vector<camera_column> columns;
  std::vector<Eigen::Index> first;  // per camera and one beyond: its first column
  std::vector<pose_param_name> pose;

  Eigen::Index camera_columns() const { return static_cast<Eigen::Index>(columns.size()); }
  Eigen::Index pose_columns() const { return static_cast<Eigen::Index>(pose.size()); }
  Eigen::Index columns_of(std::size_t camera) const { return first[camera + 1] - first[camera]; }
};

column_layout number_columns(const std::vector<std::vector<parameter_name>>& free_params,
                             const std::vector<pose_param_name>& free_pose);

// The cameras that a shot touches, each once, and where their columns stand in the shot's
// own block of the equations.
struct touched_cameras {
  std::vector<std::size_t> cameras;
  std::vector<Eigen::Index> local_first;  // per touched camera
  std::vector<std::size_t> entry;         // per camera entry of the group, its touched camera
  Eigen::Index columns = 0;
};

// One shot of one group.
struct shot_reference {
  std::size_t group;
  std::size_t shot;           // in the group
  Eigen::Index first_weight;  // N weights per camera entry follow one another
};

// What a solve works on and never changes. Holds the groups by reference.
struct solver_problem {
  const std::vector<view_group>& groups;
  std::vector<constraint_term> camera_terms;
  std::vector<pose_term> pose_terms;
  solve_settings settings;
  column_layout layout;
  std::vector<touched_cameras> touched;  // per group
  std::vector<shot_reference> shots;     // of all groups, in order
  Eigen::Index weight_count = 0;
};

solver_problem make_problem(const std::vector<view_group>& groups,
                            const std::vector<std::vector<parameter_name>>& free_params,
                            const std::vector<pose_param_name>& free_pose,
                            const std::vector<constraint_term>& camera_terms,
                            const std::vector<pose_term>& pose_terms,
                            const solve_settings& settings);

// What a solve moves. A trial is a new state, never the old one changed and restored.
struct solver_state {
  rig models;
  std::vector<ModelPose> poses;  // per shot of the problem
  Eigen::ArrayXd weights;        // 1 or 0 per observed point
};

solver_state start_state(const solver_problem& problem, const rig& models);

}  // namespace ocpan

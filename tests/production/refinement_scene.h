#pragma once

#include <cmath>
#include <vector>

#include "model/constraint_terms.h"
#include "model/projection.h"
#include "model/rigid_rotation.h"
#include "production/fixture_refinement.h"
#include "solver/solve_stage.h"

namespace ocpan::testing {

inline constexpr double radius = 1000;
inline constexpr refinement_tolerances tolerances{5.0, 20.0, 0.10000000149011612};

// Two cameras a quarter turn apart whose distortion axes are near their own.
inline rig true_rig() {
  model_map model = initial_model({640, 480, 120, 1});
  model[H_2] += 1.5;
  model[V_2] -= 2.5;
  model[O_th] -= 0.004;
  model[rho_1] = -0.01;
  rig models{model, rotate_model(model, rotation_from_vector({0, 1.2, 0}))};
  models[1][C_0] = 20;
  models[1][C_2] = -15;
  return models;
}

// What both cameras see of a field of points on the sphere between them.
inline pair_measurement true_measurement(const rig& models) {
  pair_measurement measurement{{0, 1}, Eigen::Matrix3Xd::Zero(3, 1), {}, {}};
  for (double azimuth = 0.35; azimuth <= 0.86; azimuth += 0.05) {
    for (double elevation = -0.4; elevation <= 0.41; elevation += 0.08) {
      const Eigen::Vector3d feature =
          radius * Eigen::Vector3d(-std::sin(azimuth) * std::cos(elevation), std::sin(elevation),
                                   -std::cos(azimuth) * std::cos(elevation));
      std::vector<Eigen::Matrix2Xd> seen;
      for (const model_map& model : models) {
        Eigen::ArrayXd x, y;
        project_points(x, y, feature, model, Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero());
        seen.emplace_back(Eigen::Vector2d(x[0], y[0]));
      }
      measurement.shots.push_back(seen);
      measurement.poses.push_back({Eigen::Vector3d::Zero(), feature});
    }
  }
  return measurement;
}

// What the refinement of two cameras tells the solver, all by hand but for the settings.
inline rig solve_by_hand(const std::vector<pair_measurement>& groups, const rig& start,
                         const solve_settings& settings) {
  std::vector<constraint_term> terms;
  for (std::size_t c = 0; c < 2; ++c) {
    const Eigen::Vector3d a = direction_from_angles(start[c].at(A_th), start[c].at(A_ph));
    const Eigen::Vector3d h(start[c].at(H_0), start[c].at(H_1), start[c].at(H_2));
    const Eigen::Vector3d v(start[c].at(V_0), start[c].at(V_1), start[c].at(V_2));
    terms.push_back(make_axis_term(c, 0.0001));
    terms.push_back(make_prior_term(C_0, c, start[c].at(C_0), 0.1F));
    terms.push_back(make_prior_term(C_1, c, start[c].at(C_1), 0.1F));
    terms.push_back(make_prior_term(C_2, c, start[c].at(C_2), 0.1F));
    terms.push_back(make_center_y_term(c, v.dot(a), 20));
    terms.push_back(make_center_x_term(c, h.dot(a), 20));
    terms.push_back(make_scale_y_term(c, v.norm(), 200));
    terms.push_back(make_scale_x_term(c, h.norm(), 200));
  }
  const double x = 5.0 / 100;
  const pose_term sphere = make_radius_term(radius, radius * std::sqrt((2 - x) * x * 0.1));
  run_report unread;
  rig refined;
  std::vector<pair_measurement> unused;
  solve_stage(unread, refined, unused, start, groups,
              {{H_0, H_2, V_0, V_1, V_2, O_th, O_ph},
               {H_0, H_1, H_2, V_0, V_1, V_2, A_th, A_ph, C_0, C_1, C_2, O_th, O_ph}},
              {T_0, T_1, T_2}, terms, {sphere}, settings);
  return refined;
}

}  // namespace ocpan::testing

#include "production/fixture_refinement.h"

#include <cmath>

#include "model/constraint_terms.h"
#include "solver/solve_stage.h"

namespace ocpan {
namespace {

constexpr double axis_sigma = 0.0001;  // of 1 - A.O

Eigen::Vector2d position_of(const prod_corner& corner) { return {corner.x, corner.y}; }

std::vector<constraint_term> hold_cameras(const rig& models,
                                          const refinement_tolerances& tolerances) {
  const double center_sigma = tolerances.direction_sigma;
  const double scale_sigma = tolerances.direction_sigma * 10.0;
  std::vector<constraint_term> terms;
  for (std::size_t c = 0; c < models.size(); ++c) {
    const model_map& model = models[c];
    const Eigen::Vector3d axis =
        direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
    const Eigen::Vector3d h = vector_of(model, H_0);
    const Eigen::Vector3d v = vector_of(model, V_0);
    terms.push_back(make_axis_term(c, axis_sigma));
    for (const parameter_name key : {C_0, C_1, C_2}) {
      terms.push_back(make_prior_term(key, c, value_of(model, key), tolerances.position_sigma));
    }
    terms.push_back(make_center_y_term(c, v.dot(axis), center_sigma));
    terms.push_back(make_center_x_term(c, h.dot(axis), center_sigma));
    terms.push_back(make_scale_y_term(c, v.norm(), scale_sigma));
    terms.push_back(make_scale_x_term(c, h.norm(), scale_sigma));
  }
  return terms;
}

// A residual of 1 is a difference of squares at a fixed fraction of the radius.
pose_term hold_sphere(double radius_mm, double percent) {
  const double x = percent / 100;
  return make_radius_term(radius_mm, radius_mm * std::sqrt((2 - x) * x * 0.1));
}

// Camera 0 keeps its position, its axis and H_1: they anchor the rig's frame.
std::vector<std::vector<parameter_name>> free_parameters(std::size_t cameras) {
  std::vector<std::vector<parameter_name>> lists(
      cameras, {H_0, H_1, H_2, V_0, V_1, V_2, A_th, A_ph, C_0, C_1, C_2, O_th, O_ph});
  if (cameras > 0) lists[0] = {H_0, H_2, V_0, V_1, V_2, O_th, O_ph};
  return lists;
}

}  // namespace

Eigen::Vector3d feature_start(const Eigen::Vector3d& first, const Eigen::Vector3d& second,
                              double radius_mm) {
  const Eigen::Vector3d s = first + second;
  const double phi = std::atan2(s.x(), s.y());
  const double psi = std::atan2(s.z(), std::cos(phi) * s.y() + std::sin(phi) * s.x());
  return radius_mm * Eigen::Vector3d(std::cos(psi) * std::sin(phi), std::cos(psi) * std::cos(phi),
                                     std::sin(psi));
}

std::vector<pair_measurement> build_pair_measurements(
    const std::vector<camera_pair>& pairs, const pair_map<corner_index_lists>& matches,
    const std::vector<std::vector<prod_corner>>& corners, const std::vector<sphere_points>& points,
    double radius_mm) {
  std::vector<pair_measurement> measurements;
  for (const camera_pair& pair : pairs) {
    const corner_index_lists& matched = matches.at(pair);
    if (matched.first.empty()) continue;
    pair_measurement measurement;
    measurement.cameras = {pair.first, pair.second};
    measurement.board_points = Eigen::Matrix3Xd::Zero(3, 1);
    for (std::size_t k = 0; k < matched.first.size(); ++k) {
      const std::int32_t a = matched.first[k];
      const std::int32_t b = matched.second[k];
      measurement.shots.push_back({position_of(corners[pair.first][static_cast<std::size_t>(a)]),
                                   position_of(corners[pair.second][static_cast<std::size_t>(b)])});
      measurement.poses.push_back(
          {Eigen::Vector3d::Zero(),
           feature_start(points[pair.first].col(a), points[pair.second].col(b), radius_mm)});
    }
    measurements.push_back(std::move(measurement));
  }
  return measurements;
}

void refine_rig(rig& models_out, std::vector<pair_measurement>& measurements_out, const rig& models,
                const std::vector<pair_measurement>& measurements, double radius_mm,
                const refinement_tolerances& tolerances) {
  solve_settings settings;
  settings.reject_limit = 24.0;
  settings.reject = false;
  settings.abs_tol = 1e-05;
  settings.rel_tol = 1e-07;
  settings.max_iterations = 50.0;
  settings.terms_in_sigma = true;
  run_report unread;
  solve_stage(unread, models_out, measurements_out, models, measurements,
              free_parameters(models.size()), {T_0, T_1, T_2}, hold_cameras(models, tolerances),
              {hold_sphere(radius_mm, tolerances.radius_percent)}, settings);
}

}  // namespace ocpan

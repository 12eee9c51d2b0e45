#include "model/parameters.h"

#include <array>
#include <cmath>

namespace ocpan {

const double pi = std::acos(-1.0);

const char* parameter_text(parameter_name key) {
  static constexpr std::array<const char*, parameter_count> texts = {
      "C_0", "C_1", "C_2",  "A_th", "A_ph",  "H_0",   "H_1",   "H_2", "V_0",
      "V_1", "V_2", "O_th", "O_ph", "rho_0", "rho_1", "rho_2", "L",   "LAMBDA"};
  return texts.at(static_cast<std::size_t>(key));
}

double value_of(const model_map& model, parameter_name key) {
  const auto found = model.find(key);
  return found == model.end() ? 0.0 : found->second;
}

Eigen::Vector3d vector_of(const model_map& model, parameter_name first) {
  return {value_of(model, first), value_of(model, static_cast<parameter_name>(first + 1)),
          value_of(model, static_cast<parameter_name>(first + 2))};
}

Eigen::Vector3d direction_from_angles(double th, double ph) {
  return {std::sin(th) * std::cos(ph), std::sin(th) * std::sin(ph), std::cos(th)};
}

Eigen::Vector3d direction_d_th(double th, double ph) {
  return {std::cos(th) * std::cos(ph), std::cos(th) * std::sin(ph), -std::sin(th)};
}

Eigen::Vector3d direction_d_ph(double th, double ph) {
  return {-std::sin(th) * std::sin(ph), std::sin(th) * std::cos(ph), 0.0};
}

direction_angles angles_from_direction(const Eigen::Vector3d& v) {
  return {std::atan2(std::sqrt(v.x() * v.x() + v.y() * v.y()), v.z()), std::atan2(v.y(), v.x())};
}

model_map initial_model(const camera_details& camera) {
  const double hfov = camera.hfov;
  const bool rectilinear = camera.lens == 0;
  const double d = rectilinear ? std::tan(hfov * pi / 360) : 2 * std::sin(hfov * pi / 720);
  const double width = camera.width;
  const double height = camera.height;
  // V_1 comes from the width too: d was made from the horizontal field, pixels are square.
  return {{C_0, 0.0},
          {C_1, 0.0},
          {C_2, 0.0},
          {A_th, pi},
          {A_ph, 0.0},
          {H_0, 0.5 * width / d},
          {H_1, 0.0},
          {H_2, -0.5 * width},
          {V_0, 0.0},
          {V_1, -0.5 * width / d},
          {V_2, -0.5 * height},
          {O_th, pi},
          {O_ph, 0.0},
          {rho_0, 0.0},
          {rho_1, 0.0},
          {rho_2, 0.0},
          {L, rectilinear ? 1.0 : -0.5}};
}

double lambda_from_law(double law) { return law >= 0 ? law * law : -0.5 * law * law; }

double law_from_lambda(double lambda) {
  return lambda >= 0 ? std::sqrt(lambda) : -std::sqrt(-2 * lambda);
}

}  // namespace ocpan

#include "model/rigid_rotation.h"

#include <limits>

#include <Eigen/LU>
#include <Eigen/SVD>

namespace ocpan {
namespace {

void turn_vector(model_map& model, parameter_name first, const Eigen::Matrix3d& rotation) {
  const Eigen::Vector3d turned = rotation * vector_of(model, first);
  for (int i = 0; i < 3; ++i) model[static_cast<parameter_name>(first + i)] = turned[i];
}

void turn_axis(model_map& model, parameter_name th, parameter_name ph,
               const Eigen::Matrix3d& rotation) {
  const Eigen::Vector3d turned =
      rotation * direction_from_angles(value_of(model, th), value_of(model, ph));
  const direction_angles angles = angles_from_direction(turned);
  model[th] = angles.th;
  model[ph] = angles.ph;
}

}  // namespace

Eigen::Matrix3d closest_rotation(const Eigen::Matrix3d& m) {
  if (!m.allFinite()) {
    return Eigen::Matrix3d::Constant(std::numeric_limits<double>::quiet_NaN());
  }
  const Eigen::JacobiSVD<Eigen::Matrix3d> svd(m, Eigen::ComputeFullU | Eigen::ComputeFullV);
  const double s = svd.matrixU().determinant() * svd.matrixV().determinant();
  return svd.matrixU() * Eigen::Vector3d(1, 1, s).asDiagonal() * svd.matrixV().transpose();
}

model_map rotate_model(const model_map& model, const Eigen::Matrix3d& rotation) {
  model_map turned = model;
  turn_vector(turned, C_0, rotation);
  turn_vector(turned, H_0, rotation);
  turn_vector(turned, V_0, rotation);
  turn_axis(turned, A_th, A_ph, rotation);
  turn_axis(turned, O_th, O_ph, rotation);
  return turned;
}

}  // namespace ocpan

#include "tools/adjust/camera_increments.h"

#include <Eigen/Geometry>

#include "model/pose.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

void set_vector(model_map& model, parameter_name first, const Vector3d& v) {
  for (int i = 0; i < 3; ++i) model[static_cast<parameter_name>(first + i)] = v[i];
}

void set_direction(model_map& model, parameter_name th, parameter_name ph, const Vector3d& v) {
  const direction_angles angles = angles_from_direction(v);
  model[th] = angles.th;
  model[ph] = angles.ph;
}

// The same mapping with rho_0 = 0. Q = (1 + mu) lam + zeta2 O is S Q' with
// S = 1 + rho_0 (1 - O O^T) and a Q' whose rho is divided by 1 + rho_0, and S goes over to
// H, V and A.
struct plain_lens {
  Vector3d axis, horizontal, vertical, distortion_axis;
  double radial_1, radial_2;
};

plain_lens without_rho_0(const model_map& model) {
  const Vector3d o = direction_from_angles(value_of(model, O_th), value_of(model, O_ph));
  const double r0 = value_of(model, rho_0);
  const Matrix3d scaling = Matrix3d::Identity() + r0 * (Matrix3d::Identity() - o * o.transpose());
  const Vector3d axis =
      scaling * direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
  const double length = axis.norm();
  return {axis / length,
          scaling * vector_of(model, H_0) / length,
          scaling * vector_of(model, V_0) / length,
          o,
          value_of(model, rho_1) / (1 + r0),
          value_of(model, rho_2) / (1 + r0)};
}

}  // namespace

camera_state split_camera(const model_map& model) {
  const plain_lens plain = without_rho_0(model);
  const Vector3d across =
      (plain.horizontal - plain.horizontal.dot(plain.axis) * plain.axis).normalized();
  camera_state camera;
  camera.centre = vector_of(model, C_0);
  camera.rig_from_camera << plain.axis, across, plain.axis.cross(across);
  const Matrix3d camera_from_rig = camera.rig_from_camera.transpose();

  set_vector(camera.lens, C_0, Vector3d::Zero());
  set_direction(camera.lens, A_th, A_ph, Vector3d::UnitX());
  set_vector(camera.lens, H_0, camera_from_rig * plain.horizontal);
  set_vector(camera.lens, V_0, camera_from_rig * plain.vertical);
  camera.lens[H_2] = 0;
  set_direction(camera.lens, O_th, O_ph, camera_from_rig * plain.distortion_axis);
  camera.lens[rho_0] = 0;
  camera.lens[rho_1] = plain.radial_1;
  camera.lens[rho_2] = plain.radial_2;
  camera.lens[L] = value_of(model, L);
  camera.lens[LAMBDA] = lambda_from_law(value_of(model, L));
  return camera;
}

model_map join_camera(const camera_state& camera) {
  const Matrix3d& turn = camera.rig_from_camera;
  model_map model = camera.lens;
  set_vector(model, C_0, camera.centre);
  set_direction(model, A_th, A_ph, turn.col(0));
  set_vector(model, H_0, turn * vector_of(camera.lens, H_0));
  set_vector(model, V_0, turn * vector_of(camera.lens, V_0));
  set_direction(
      model, O_th, O_ph,
      turn * direction_from_angles(value_of(camera.lens, O_th), value_of(camera.lens, O_ph)));
  return model;
}

camera_state moved(const camera_state& camera, const increment_vector& step) {
  camera_state next = camera;
  next.centre += step.segment<3>(move_x);
  next.rig_from_camera *= rotation_from_vector(step.segment<3>(turn_x));
  for (int i = place_increments; i < increments_per_camera; ++i) {
    next.lens[key_of(static_cast<camera_increment>(i))] += step[i];
  }
  next.lens[L] = law_from_lambda(next.lens[LAMBDA]);
  return next;
}

parameter_name key_of(camera_increment increment) {
  static constexpr parameter_name keys[] = {H_1,  V_2,  V_1,   H_0,   V_0,
                                            O_th, O_ph, rho_1, rho_2, LAMBDA};
  return keys[increment - place_increments];
}

}  // namespace ocpan

#include "model/constraint_terms.h"

namespace ocpan {
namespace {

using Eigen::Vector3d;

Vector3d axis_of(const model_map& model) {
  return direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
}

Vector3d axis_d_th(const model_map& model) {
  return direction_d_th(value_of(model, A_th), value_of(model, A_ph));
}

Vector3d axis_d_ph(const model_map& model) {
  return direction_d_ph(value_of(model, A_th), value_of(model, A_ph));
}

// Which component of the vector that starts at first a key is; -1 if none.
int component_of(parameter_name key, parameter_name first) {
  return key >= first && key < first + 3 ? key - first : -1;
}

// A.S and its derivatives, S being H or V by its first key.
double center(const model_map& model, parameter_name first) {
  return axis_of(model).dot(vector_of(model, first));
}

double center_by(const model_map& model, parameter_name first, parameter_name key) {
  if (const int k = component_of(key, first); k >= 0) return axis_of(model)[k];
  if (key == A_th) return axis_d_th(model).dot(vector_of(model, first));
  if (key == A_ph) return axis_d_ph(model).dot(vector_of(model, first));
  return 0;
}

constraint_term make_center_pair_term(parameter_name first, std::size_t a, std::size_t b,
                                      double sigma) {
  return {[=](const rig& models) {
            return (center(models[a], first) - center(models[b], first)) / sigma;
          },
          [=](const rig& models, std::size_t camera, parameter_name key) {
            if (camera == a) return -center_by(models[a], first, key) / sigma;
            if (camera == b) return center_by(models[b], first, key) / sigma;
            return 0.0;
          }};
}

constraint_term make_scale_pair_term(parameter_name first, std::size_t a, std::size_t b,
                                     double sigma) {
  return {[=](const rig& models) {
            return (vector_of(models[a], first).squaredNorm() -
                    vector_of(models[b], first).squaredNorm()) /
                   (sigma * sigma);
          },
          [=](const rig& models, std::size_t camera, parameter_name key) {
            if (component_of(key, first) < 0) return 0.0;
            if (camera == a) return -2 * value_of(models[a], key) / (sigma * sigma);
            if (camera == b) return 2 * value_of(models[b], key) / (sigma * sigma);
            return 0.0;
          }};
}

constraint_term make_center_term(parameter_name first, std::size_t held, double target,
                                 double sigma) {
  return {[=](const rig& models) { return (target - center(models[held], first)) / sigma; },
          [=](const rig& models, std::size_t camera, parameter_name key) {
            return camera == held ? center_by(models[held], first, key) / sigma : 0.0;
          }};
}

constraint_term make_scale_term(parameter_name first, std::size_t held, double target,
                                double sigma) {
  return {
      [=](const rig& models) { return (target - vector_of(models[held], first).norm()) / sigma; },
      [=](const rig& models, std::size_t camera, parameter_name key) {
        if (camera != held || component_of(key, first) < 0) return 0.0;
        const model_map& model = models[held];
        return value_of(model, key) / (vector_of(model, first).norm() * sigma);
      }};
}

}  // namespace

constraint_term make_prior_term(parameter_name key, std::size_t held, double target, double sigma) {
  return {[=](const rig& models) { return (target - value_of(models[held], key)) / sigma; },
          [=](const rig&, std::size_t camera, parameter_name by) {
            return camera == held && by == key ? 1 / sigma : 0.0;
          }};
}

constraint_term make_pair_term(parameter_name key_a, std::size_t a, parameter_name key_b,
                               std::size_t b, double sigma) {
  return {[=](const rig& models) {
            return (value_of(models[a], key_a) - value_of(models[b], key_b)) / sigma;
          },
          [=](const rig&, std::size_t camera, parameter_name by) {
            if (camera == a && by == key_a) return -1 / sigma;
            if (camera == b && by == key_b) return 1 / sigma;
            return 0.0;
          }};
}

constraint_term make_axis_term(std::size_t held, double sigma) {
  const auto distortion_axis = [](const model_map& model) {
    return direction_from_angles(value_of(model, O_th), value_of(model, O_ph));
  };
  return {[=](const rig& models) {
            const model_map& model = models[held];
            return (1 - axis_of(model).dot(distortion_axis(model))) / sigma;
          },
          [=](const rig& models, std::size_t camera, parameter_name key) {
            if (camera != held) return 0.0;
            const model_map& model = models[held];
            const double o_th = value_of(model, O_th), o_ph = value_of(model, O_ph);
            switch (key) {
              case A_th:
                return axis_d_th(model).dot(distortion_axis(model)) / sigma;
              case A_ph:
                return axis_d_ph(model).dot(distortion_axis(model)) / sigma;
              case O_th:
                return axis_of(model).dot(direction_d_th(o_th, o_ph)) / sigma;
              case O_ph:
                return axis_of(model).dot(direction_d_ph(o_th, o_ph)) / sigma;
              default:
                return 0.0;
            }
          }};
}

constraint_term make_center_y_pair_term(std::size_t a, std::size_t b, double sigma) {
  return make_center_pair_term(V_0, a, b, sigma);
}
constraint_term make_center_x_pair_term(std::size_t a, std::size_t b, double sigma) {
  return make_center_pair_term(H_0, a, b, sigma);
}
constraint_term make_scale_y_pair_term(std::size_t a, std::size_t b, double sigma) {
  return make_scale_pair_term(V_0, a, b, sigma);
}
constraint_term make_scale_x_pair_term(std::size_t a, std::size_t b, double sigma) {
  return make_scale_pair_term(H_0, a, b, sigma);
}
constraint_term make_center_y_term(std::size_t camera, double target, double sigma) {
  return make_center_term(V_0, camera, target, sigma);
}
constraint_term make_center_x_term(std::size_t camera, double target, double sigma) {
  return make_center_term(H_0, camera, target, sigma);
}
constraint_term make_scale_y_term(std::size_t camera, double target, double sigma) {
  return make_scale_term(V_0, camera, target, sigma);
}
constraint_term make_scale_x_term(std::size_t camera, double target, double sigma) {
  return make_scale_term(H_0, camera, target, sigma);
}

pose_term make_radius_term(double radius, double sigma) {
  return {[=](const ModelPose& pose) {
            return (radius * radius - pose.translation.squaredNorm()) / (sigma * sigma);
          },
          [=](const ModelPose& pose, pose_param_name key) {
            return key >= T_0 ? 2 * pose.translation[key - T_0] / (sigma * sigma) : 0.0;
          }};
}

}  // namespace ocpan

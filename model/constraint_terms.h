#pragma once

#include <cstddef>
#include <functional>

#include "model/parameters.h"
#include "model/pose.h"

namespace ocpan {

// One soft row of the solver: residual = (target - f) / sigma, derivative =
// (df/dp) / sigma. The derivative is that of f, not of the residual, and 0 for whatever
// the term doesn't depend on. The rig comes at call time; a term holds no reference to it.
struct constraint_term {
  std::function<double(const rig&)> value;
  std::function<double(const rig&, std::size_t camera, parameter_name key)> derivative;
};

// The same over one board pose.
struct pose_term {
  std::function<double(const ModelPose&)> value;
  std::function<double(const ModelPose&, pose_param_name key)> derivative;
};

// Cameras are indices into the rig, an index out of range is undefined. sigma is in the
// unit of what is held. A.H and A.V are the image centre in x and y, |H| and |V| the scales.

// Holds a parameter of a camera near a target.
constraint_term make_prior_term(parameter_name key, std::size_t camera, double target,
                                double sigma);
// Keeps a parameter of camera a and one of camera b alike.
constraint_term make_pair_term(parameter_name key_a, std::size_t a, parameter_name key_b,
                               std::size_t b, double sigma);
// Keeps the distortion axis on the camera's axis: 1 - A.O.
constraint_term make_axis_term(std::size_t camera, double sigma);
// Keep the image centres of two cameras alike.
constraint_term make_center_y_pair_term(std::size_t a, std::size_t b, double sigma);
constraint_term make_center_x_pair_term(std::size_t a, std::size_t b, double sigma);
// Keep the squared scales of two cameras alike. They are divided by sigma squared although
// the value isn't squared again in the sum: the strengths in use are tuned to that.
constraint_term make_scale_y_pair_term(std::size_t a, std::size_t b, double sigma);
constraint_term make_scale_x_pair_term(std::size_t a, std::size_t b, double sigma);
// Hold a camera's image centre or scale near a target. At a scale of 0 the derivative of a
// scale is not a number.
constraint_term make_center_y_term(std::size_t camera, double target, double sigma);
constraint_term make_center_x_term(std::size_t camera, double target, double sigma);
constraint_term make_scale_y_term(std::size_t camera, double target, double sigma);
constraint_term make_scale_x_term(std::size_t camera, double target, double sigma);

// Holds a pose's translation near a sphere about the rig's origin, in squared lengths and
// divided by sigma squared.
pose_term make_radius_term(double radius, double sigma);

}  // namespace ocpan

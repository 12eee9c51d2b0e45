#pragma once

#include <map>
#include <vector>

#include <Eigen/Core>

#include "src/camera_details.h"

namespace ocpan {

// The parameters of one camera. The order is that of a calibration file's entries, and
// pose_param_name continues the numbers.
enum parameter_name : int {
  C_0,  // projection centre, rig units
  C_1,
  C_2,
  A_th,  // camera axis as two angles, radians
  A_ph,
  H_0,  // horizontal vector, pixels per unit tangent
  H_1,
  H_2,
  V_0,  // vertical vector, pixels per unit tangent
  V_1,
  V_2,
  O_th,  // distortion axis as two angles, radians
  O_ph,
  rho_0,  // radial coefficients
  rho_1,
  rho_2,
  L,      // selects the law between angle and tangent: 1 rectilinear, -0.5 equal-area
  LAMBDA  // the solver's variable for L
};
inline constexpr int parameter_count = 18;

// The text of a parameter in a calibration file.
//
//   key   0 to 17
const char* parameter_text(parameter_name key);

// One camera's model. A rig is a vector of them, indexed by camera from 0.
using model_map = std::map<parameter_name, double>;
using rig = std::vector<model_map>;

// The value of a parameter; 0 if the model lacks it.
double value_of(const model_map& model, parameter_name key);

// The three values that start at key: C_0, H_0 or V_0.
Eigen::Vector3d vector_of(const model_map& model, parameter_name first);

// pi, as the arc cosine of -1.
extern const double pi;

// The unit vector (sin th cos ph, sin th sin ph, cos th) of two angles in radians, and
// its derivatives by th and by ph.
Eigen::Vector3d direction_from_angles(double th, double ph);
Eigen::Vector3d direction_d_th(double th, double ph);
Eigen::Vector3d direction_d_ph(double th, double ph);

// The angles of a direction of any length, radians.
struct direction_angles {
  double th;
  double ph;
};
direction_angles angles_from_direction(const Eigen::Vector3d& v);

// The model that a calibration starts from: at the rig's origin, looking along -z, no
// distortion, square pixels scaled by the width and the horizontal field of view.
// LAMBDA is not set; the solver sets it. Lens 0 is rectilinear, 1 and 2 are equal-area
// fisheyes.
model_map initial_model(const camera_details& camera);

// L and the solver's variable for it. Near zero chi = theta + LAMBDA theta^3 / 3 on both
// sides, which L itself doesn't give.
double lambda_from_law(double law);
double law_from_lambda(double lambda);

}  // namespace ocpan

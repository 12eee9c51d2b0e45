#pragma once

#include <vector>

#include "model/parameters.h"

namespace ocpan::testing {

// A camera with every parameter off its start, O apart from A.
inline model_map distorted_model(int lens) {
  model_map model = initial_model({960, 720, lens == 0 ? 80.0f : 150.0f, lens});
  model[C_0] = 3;
  model[C_1] = -2;
  model[C_2] = 5;
  model[A_th] = pi - 0.3;
  model[A_ph] = 0.8;
  model[H_1] = 1.5;
  model[V_0] = -0.7;
  model[O_th] = pi - 0.27;
  model[O_ph] = 0.9;
  model[rho_0] = 0.02;
  model[rho_1] = -0.03;
  model[rho_2] = 0.004;
  return model;
}

// One camera for each branch of the lens law.
struct derivative_case {
  const char* name;
  model_map model;
};

inline std::vector<derivative_case> derivative_cases() {
  std::vector<derivative_case> cases = {{"rectilinear", distorted_model(0)},
                                        {"fisheye", distorted_model(1)}};
  model_map weak = distorted_model(0);
  weak[L] = 0.05;
  cases.push_back({"weakly rectilinear", weak});
  weak[L] = -0.05;
  cases.push_back({"weakly fisheye", weak});
  model_map stereographic = distorted_model(1);
  stereographic[L] = 0.5;
  cases.push_back({"stereographic", stereographic});
  return cases;
}

}  // namespace ocpan::testing

#pragma once

#include "model/parameters.h"

namespace ocpan::testing {

// Looks along -z, 90 degrees wide: a pixel is (320 + 320 x / -z, 240 - 320 y / -z).
inline model_map wide_lens(double c0, double c1, double c2) {
  model_map model = initial_model({640, 480, 90.0f, 0});
  model[C_0] = c0;
  model[C_1] = c1;
  model[C_2] = c2;
  return model;
}

}  // namespace ocpan::testing

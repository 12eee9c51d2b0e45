#include "calibration/rig_constraints.h"

#include <cstddef>

namespace ocpan {
namespace {

void append_priors(std::vector<constraint_term>& terms, std::size_t camera) {
  terms.push_back(make_axis_term(camera, 0.01));
  terms.push_back(make_prior_term(rho_0, camera, 0, 0.05));
  terms.push_back(make_prior_term(rho_1, camera, 0, 0.0005));
  terms.push_back(make_prior_term(rho_2, camera, 0, 0.000005));
}

void append_ties(std::vector<constraint_term>& terms, std::size_t first, std::size_t camera) {
  terms.push_back(make_pair_term(LAMBDA, first, LAMBDA, camera, 0.001));
  terms.push_back(make_pair_term(rho_0, first, rho_0, camera, 0.0001));
  terms.push_back(make_pair_term(rho_1, first, rho_1, camera, 0.00001));
  terms.push_back(make_pair_term(rho_2, first, rho_2, camera, 0.000001));
  constexpr double pixels = 2.0;
  terms.push_back(make_center_x_pair_term(first, camera, pixels));
  terms.push_back(make_scale_x_pair_term(first, camera, pixels));
  terms.push_back(make_center_y_pair_term(first, camera, pixels));
  terms.push_back(make_scale_y_pair_term(first, camera, pixels));
}

}  // namespace

std::vector<constraint_term> rig_constraints(const std::vector<camera_details>& cameras) {
  std::vector<constraint_term> terms;
  std::vector<std::size_t> fisheyes, rectilinear;
  for (std::size_t c = 0; c < cameras.size(); ++c) {
    append_priors(terms, c);
    (cameras[c].lens != 0 ? fisheyes : rectilinear).push_back(c);
  }
  for (const auto& kind : {fisheyes, rectilinear}) {
    for (std::size_t k = 1; k < kind.size(); ++k) append_ties(terms, kind.front(), kind[k]);
  }
  return terms;
}

}  // namespace ocpan

#include "model/constraint_terms.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

using Eigen::Vector3d;

// Two cameras with nothing at a round value.
rig two_cameras() {
  rig models = {initial_model({900, 700, 80, 0}), initial_model({900, 700, 150, 1})};
  for (std::size_t c = 0; c < 2; ++c) {
    double shift = 0.01 * static_cast<double>(c + 1);
    for (auto& [key, value] : models[c]) value += (shift += 0.013);
    models[c][LAMBDA] = lambda_from_law(models[c][L]);
  }
  return models;
}

Vector3d axis(const model_map& m) { return direction_from_angles(m.at(A_th), m.at(A_ph)); }
Vector3d distortion_axis(const model_map& m) {
  return direction_from_angles(m.at(O_th), m.at(O_ph));
}

struct named_term {
  std::string name;
  constraint_term term;
};

std::vector<named_term> all_terms() {
  return {{"prior", make_prior_term(rho_0, 1, 0.3, 0.05)},
          {"pair", make_pair_term(rho_1, 0, rho_2, 1, 0.02)},
          {"axis", make_axis_term(1, 0.01)},
          {"center_y_pair", make_center_y_pair_term(0, 1, 2.0)},
          {"center_x_pair", make_center_x_pair_term(0, 1, 2.0)},
          {"scale_y_pair", make_scale_y_pair_term(0, 1, 2.0)},
          {"scale_x_pair", make_scale_x_pair_term(0, 1, 2.0)},
          {"center_y", make_center_y_term(1, 350, 20)},
          {"center_x", make_center_x_term(1, 450, 20)},
          {"scale_y", make_scale_y_term(1, 500, 200)},
          {"scale_x", make_scale_x_term(1, 500, 200)}};
}

TEST(ConstraintTerms, HaveTheDerivativesOfWhatTheyHoldAndNotOfTheResidual) {
  // value = (target - f) / s and derivative = (df/dp) / s, so the value's own slope is
  // minus the derivative; the pair terms count their second camera as the target.
  const rig models = two_cameras();
  int checks = 0;
  for (const named_term& t : all_terms()) {
    for (std::size_t camera = 0; camera < 2; ++camera) {
      for (int k = 0; k < parameter_count; ++k) {
        const auto key = static_cast<parameter_name>(k);
        const double h = 1e-5 * std::max(1.0, std::abs(models[camera].at(key)));
        rig up = models, down = models;
        up[camera][key] += h;
        down[camera][key] -= h;
        const double slope = (t.term.value(up) - t.term.value(down)) / (2 * h);
        const double got = t.term.derivative(models, camera, key);
        EXPECT_NEAR(got, -slope, 1e-5 * std::max(1.0, std::abs(slope)))
            << t.name << " camera " << camera << " " << parameter_text(key);
        ++checks;
      }
    }
  }
  EXPECT_EQ(checks, 11 * 2 * 18);
}

TEST(ConstraintTerms, HaveTheirValues) {
  const rig m = two_cameras();
  const Vector3d h0 = vector_of(m[0], H_0), h1 = vector_of(m[1], H_0);
  const Vector3d v0 = vector_of(m[0], V_0), v1 = vector_of(m[1], V_0);
  const std::vector<double> expected = {(0.3 - m[1].at(rho_0)) / 0.05,
                                        (m[0].at(rho_1) - m[1].at(rho_2)) / 0.02,
                                        (1 - axis(m[1]).dot(distortion_axis(m[1]))) / 0.01,
                                        (axis(m[0]).dot(v0) - axis(m[1]).dot(v1)) / 2,
                                        (axis(m[0]).dot(h0) - axis(m[1]).dot(h1)) / 2,
                                        (v0.squaredNorm() - v1.squaredNorm()) / 4,
                                        (h0.squaredNorm() - h1.squaredNorm()) / 4,
                                        (350 - axis(m[1]).dot(v1)) / 20,
                                        (450 - axis(m[1]).dot(h1)) / 20,
                                        (500 - v1.norm()) / 200,
                                        (500 - h1.norm()) / 200};
  const std::vector<named_term> terms = all_terms();
  ASSERT_EQ(terms.size(), expected.size());
  for (std::size_t i = 0; i < terms.size(); ++i) {
    EXPECT_DOUBLE_EQ(terms[i].term.value(m), expected[i]) << terms[i].name;
  }
}

TEST(PriorTerm, OfATenthAboveItsTargetAtATwentiethIsMinusTwo) {
  rig models(1);
  models[0][rho_0] = 0.1;
  const constraint_term term = make_prior_term(rho_0, 0, 0, 0.05);
  EXPECT_DOUBLE_EQ(term.value(models), -2.0);
  EXPECT_DOUBLE_EQ(term.derivative(models, 0, rho_0), 20.0);
  EXPECT_EQ(term.derivative(models, 0, rho_1), 0.0);
}

TEST(PairTerm, OfAParameterWithItselfIsZeroWithTheFirstsDerivative) {
  rig models(1);
  models[0][L] = 0.7;
  const constraint_term term = make_pair_term(L, 0, L, 0, 0.001);
  EXPECT_EQ(term.value(models), 0.0);
  EXPECT_DOUBLE_EQ(term.derivative(models, 0, L), -1000);
}

TEST(PairTerms, KnowOnlyTheirTwoCameras) {
  rig models(3, initial_model({900, 700, 80, 0}));
  int checks = 0;
  for (const auto& term : {make_pair_term(H_0, 0, H_0, 1, 1), make_center_x_pair_term(0, 1, 1),
                           make_center_y_pair_term(0, 1, 1), make_scale_x_pair_term(0, 1, 1),
                           make_scale_y_pair_term(0, 1, 1)}) {
    for (int k = 0; k < parameter_count; ++k) {
      EXPECT_EQ(term.derivative(models, 2, static_cast<parameter_name>(k)), 0.0);
      ++checks;
    }
  }
  EXPECT_EQ(checks, 5 * 18);
}

TEST(AxisTerm, OnItsAxisIsZero) {
  rig models(1);
  models[0][A_th] = models[0][O_th] = 0;
  EXPECT_EQ(make_axis_term(0, 0.01).value(models), 0.0);
}

TEST(ScaleTerm, AtAScaleOfZeroHasNoDerivative) {
  const rig models(1);
  EXPECT_TRUE(std::isnan(make_scale_y_term(0, 1, 1).derivative(models, 0, V_1)));
}

TEST(RadiusTerm, HoldsSquaredLengths) {
  ModelPose pose;
  pose.translation = Vector3d(1, 2, 2);
  const pose_term term = make_radius_term(5, 2);
  EXPECT_DOUBLE_EQ(term.value(pose), (25 - 9) / 4.0);
  EXPECT_EQ(term.derivative(pose, R_1), 0.0);
  EXPECT_DOUBLE_EQ(term.derivative(pose, T_0), 2 * 1 / 4.0);
  EXPECT_DOUBLE_EQ(term.derivative(pose, T_2), 2 * 2 / 4.0);
}

TEST(ConstraintTerms, KeepNoReferenceToTheRigTheyWereMadeFor) {
  const constraint_term term = make_prior_term(H_0, 0, 1, 1);
  rig first(1), second(1);
  first[0][H_0] = 3;
  second[0][H_0] = 5;
  EXPECT_EQ(term.value(first), -2);
  EXPECT_EQ(term.value(second), -4);
}

}  // namespace
}  // namespace ocpan

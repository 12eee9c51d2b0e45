#include "calibration/rig_constraints.h"

#include <string>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

// Which terms hold, told by their derivatives: "camera key strength" of the first non-zero
// entry that names a term, cameras in index order.
std::string signature(const constraint_term& term, const rig& models) {
  std::string text;
  for (std::size_t c = 0; c < models.size(); ++c) {
    for (int k = 0; k < parameter_count; ++k) {
      const auto key = static_cast<parameter_name>(k);
      if (term.derivative(models, c, key) == 0) continue;
      text += std::to_string(c) + parameter_text(key) + " ";
    }
  }
  return text;
}

// Axes off the pole, so that no derivative vanishes by chance.
rig models_for(std::size_t cameras) {
  rig models(cameras, initial_model({900, 700, 80, 0}));
  for (model_map& model : models) {
    for (auto& [key, value] : model) value += 0.013 * (1 + key);
    model[LAMBDA] = 0.5;
  }
  return models;
}

TEST(RigConstraints, GiveEachCameraItsPriorsFirst) {
  const auto terms = rig_constraints({{900, 700, 80, 0}, {900, 700, 180, 1}});
  const rig models = models_for(2);
  ASSERT_EQ(terms.size(), 8u);  // one of each kind: no ties
  EXPECT_EQ(signature(terms[0], models), "0A_th 0A_ph 0O_th 0O_ph ");
  EXPECT_DOUBLE_EQ(terms[1].derivative(models, 0, rho_0), 1 / 0.05);
  EXPECT_DOUBLE_EQ(terms[2].derivative(models, 0, rho_1), 1 / 0.0005);
  EXPECT_DOUBLE_EQ(terms[3].derivative(models, 0, rho_2), 1 / 0.000005);
  EXPECT_EQ(signature(terms[4], models), "1A_th 1A_ph 1O_th 1O_ph ");
  EXPECT_DOUBLE_EQ(terms[7].derivative(models, 1, rho_2), 1 / 0.000005);
  rig at_zero = models;
  at_zero[0][rho_0] = 0;
  EXPECT_EQ(terms[1].value(at_zero), 0);
}

TEST(RigConstraints, TieEachCameraToTheFirstOfItsKindFisheyesAhead) {
  // 0 and 2 rectilinear, 1, 3 and 4 fisheyes of both kinds.
  const auto terms = rig_constraints({{900, 700, 80, 0},
                                      {900, 700, 180, 1},
                                      {900, 700, 80, 0},
                                      {900, 700, 200, 2},
                                      {900, 700, 180, 1}});
  const rig models = models_for(5);
  ASSERT_EQ(terms.size(), 5u * 4 + 3 * 8);
  const auto ties = [&](std::size_t start, const std::string& a, const std::string& b) {
    EXPECT_EQ(signature(terms[start], models), a + "LAMBDA " + b + "LAMBDA ");
    EXPECT_EQ(signature(terms[start + 1], models), a + "rho_0 " + b + "rho_0 ");
    EXPECT_EQ(signature(terms[start + 2], models), a + "rho_1 " + b + "rho_1 ");
    EXPECT_EQ(signature(terms[start + 3], models), a + "rho_2 " + b + "rho_2 ");
    const auto both = [&](const std::string& keys_of_x) {
      std::string text;
      for (const std::string& c : {a, b}) {
        std::string keys = keys_of_x;
        for (std::size_t at = 0; (at = keys.find('@', at)) != std::string::npos;) {
          keys.replace(at, 1, c);
        }
        text += keys;
      }
      return text;
    };
    EXPECT_EQ(signature(terms[start + 4], models), both("@A_th @A_ph @H_0 @H_1 @H_2 "));
    EXPECT_EQ(signature(terms[start + 5], models), both("@H_0 @H_1 @H_2 "));
    EXPECT_EQ(signature(terms[start + 6], models), both("@A_th @A_ph @V_0 @V_1 @V_2 "));
    EXPECT_EQ(signature(terms[start + 7], models), both("@V_0 @V_1 @V_2 "));
  };
  ties(20, "1", "3");
  ties(28, "1", "4");
  ties(36, "0", "2");
  EXPECT_DOUBLE_EQ(terms[20].derivative(models, 1, LAMBDA), -1 / 0.001);
  EXPECT_DOUBLE_EQ(terms[21].derivative(models, 3, rho_0), 1 / 0.0001);
  EXPECT_DOUBLE_EQ(terms[22].derivative(models, 3, rho_1), 1 / 0.00001);
  EXPECT_DOUBLE_EQ(terms[23].derivative(models, 3, rho_2), 1 / 0.000001);
  // Strength 2, and 2 squared for the scales.
  EXPECT_DOUBLE_EQ(terms[25].derivative(models, 3, H_0), 2 * models[3].at(H_0) / 4);
  const Eigen::Vector3d axis = direction_from_angles(models[3].at(A_th), models[3].at(A_ph));
  EXPECT_DOUBLE_EQ(terms[24].derivative(models, 3, H_0), axis.x() / 2);
}

}  // namespace
}  // namespace ocpan

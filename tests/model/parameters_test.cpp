#include "model/parameters.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

TEST(ParameterText, NamesEveryKeyInOrder) {
  const std::string expected =
      "C_0 C_1 C_2 A_th A_ph H_0 H_1 H_2 V_0 V_1 V_2 O_th O_ph rho_0 rho_1 rho_2 L LAMBDA ";
  std::string joined;
  for (int key = 0; key < parameter_count; ++key) {
    joined += parameter_text(static_cast<parameter_name>(key));
    joined += ' ';
  }
  EXPECT_EQ(joined, expected);
}

TEST(ValueOf, ReadsAnAbsentKeyAsZeroAndLeavesNoTrace) {
  const model_map model{{H_0, 2.5}};
  EXPECT_EQ(value_of(model, H_0), 2.5);
  EXPECT_EQ(value_of(model, V_0), 0.0);
  EXPECT_EQ(model.size(), 1u);
}

TEST(VectorOf, TakesThreeValuesFromItsFirstKey) {
  const model_map model{{V_0, 1}, {V_1, 2}, {V_2, 3}, {O_th, 9}};
  EXPECT_EQ(vector_of(model, V_0), Eigen::Vector3d(1, 2, 3));
}

TEST(Directions, AreThoseOfTheirAngles) {
  const double th = 0.7, ph = -2.1;
  const Eigen::Vector3d v = direction_from_angles(th, ph);
  EXPECT_DOUBLE_EQ(v.x(), std::sin(0.7) * std::cos(-2.1));
  EXPECT_DOUBLE_EQ(v.y(), std::sin(0.7) * std::sin(-2.1));
  EXPECT_DOUBLE_EQ(v.z(), std::cos(0.7));
}

TEST(Directions, HaveTheDerivativesOfFiniteDifferences) {
  int checks = 0;
  for (double th = 0.2; th < 3.1; th += 0.37) {
    for (double ph = -3; ph < 3.1; ph += 0.61) {
      const double h = 1e-6;
      const Eigen::Vector3d by_th =
          (direction_from_angles(th + h, ph) - direction_from_angles(th - h, ph)) / (2 * h);
      const Eigen::Vector3d by_ph =
          (direction_from_angles(th, ph + h) - direction_from_angles(th, ph - h)) / (2 * h);
      EXPECT_LT((direction_d_th(th, ph) - by_th).norm(), 1e-9);
      EXPECT_LT((direction_d_ph(th, ph) - by_ph).norm(), 1e-9);
      ++checks;
    }
  }
  EXPECT_EQ(checks, 8 * 11);
}

TEST(Directions, ComeBackAsTheirAnglesWhateverTheirLength) {
  const direction_angles angles = angles_from_direction(5 * direction_from_angles(2.4, 1.3));
  EXPECT_NEAR(angles.th, 2.4, 1e-15);
  EXPECT_NEAR(angles.ph, 1.3, 1e-15);
  EXPECT_EQ(angles_from_direction({0, 0, -1}).th, pi);
  EXPECT_EQ(angles_from_direction({0, 0, -1}).ph, 0.0);
}

TEST(Directions, AtTheHalfTurnKeepTheSineOfPi) {
  const Eigen::Vector3d v = direction_from_angles(pi, 0);
  EXPECT_NEAR(v.x(), 1.2246468e-16, 1e-20);  // some processors' sines are good to 1e-20 here
  EXPECT_EQ(v.z(), -1.0);
}

TEST(InitialModel, OfARectilinearLensHasHalfTheWidthOverTheTangent) {
  const model_map model = initial_model({1000, 600, 90.0f, 0});
  EXPECT_NEAR(model.at(H_0), 500, 1e-12);
  EXPECT_EQ(model.at(H_1), 0);
  EXPECT_EQ(model.at(H_2), -500);
  EXPECT_EQ(model.at(V_0), 0);
  EXPECT_NEAR(model.at(V_1), -500, 1e-12);  // from the width
  EXPECT_EQ(model.at(V_2), -300);
  EXPECT_EQ(model.at(L), 1.0);
}

TEST(InitialModel, OfAFisheyeUsesTwiceTheSineOfAQuarterOfTheField) {
  const model_map model = initial_model({1920, 1080, 180.0f, 1});
  EXPECT_NEAR(model.at(H_0), 960 / std::sqrt(2.0), 1e-10);
  EXPECT_NEAR(model.at(V_1), -960 / std::sqrt(2.0), 1e-10);
  EXPECT_EQ(model.at(V_2), -540);
  EXPECT_EQ(model.at(L), -0.5);
}

TEST(InitialModel, LooksAlongMinusZFromTheOriginWithoutDistortionOrLambda) {
  const model_map model = initial_model({640, 480, 100.5f, 2});
  for (parameter_name key : {C_0, C_1, C_2, A_ph, O_ph, rho_0, rho_1, rho_2}) {
    EXPECT_EQ(model.at(key), 0) << parameter_text(key);
  }
  EXPECT_EQ(model.at(A_th), pi);
  EXPECT_EQ(model.at(O_th), pi);
  EXPECT_EQ(model.count(LAMBDA), 0u);
  EXPECT_EQ(model.size(), 17u);
}

TEST(InitialModel, IsTheSameForBothFisheyeKinds) {
  EXPECT_EQ(initial_model({640, 480, 200, 1}), initial_model({640, 480, 200, 2}));
}

TEST(Lambda, IsTheSquareOfAPositiveLawAndMinusHalfThatOfANegative) {
  EXPECT_EQ(lambda_from_law(0), 0);
  EXPECT_EQ(lambda_from_law(1), 1);
  EXPECT_EQ(lambda_from_law(-0.5), -0.125);
  EXPECT_EQ(lambda_from_law(0.3), 0.3 * 0.3);
}

TEST(Lambda, ComesBackAsTheLaw) {
  EXPECT_EQ(law_from_lambda(0), 0);
  EXPECT_FALSE(std::signbit(law_from_lambda(0)));
  EXPECT_EQ(law_from_lambda(-0.125), -0.5);
  for (double law : {-1.0, -0.5, -0.01, 0.0, 0.01, 0.7, 1.0}) {
    EXPECT_NEAR(law_from_lambda(lambda_from_law(law)), law, 1e-15);
  }
}

}  // namespace
}  // namespace ocpan

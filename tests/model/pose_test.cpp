#include "model/pose.h"

#include <cmath>
#include <random>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "model/parameters.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

TEST(RotationFromVector, OfZeroIsTheIdentity) {
  EXPECT_EQ(rotation_from_vector(Vector3d::Zero()), Matrix3d::Identity());
}

TEST(RotationFromVector, TurnsAboutTheVectorByItsLength) {
  const Vector3d v(0.3, -1.2, 0.8);
  const Matrix3d expected = Eigen::AngleAxisd(v.norm(), v.normalized()).toRotationMatrix();
  EXPECT_LT((rotation_from_vector(v) - expected).norm(), 1e-14);
}

TEST(RotationFromVector, TakesTheSeriesBelowItsThreshold) {
  // I + K + K^2 / 2. On the diagonal the square is lost in the identity, off it it isn't; and
  // 1 - cos would be exactly 0 here.
  const Vector3d v(3e-9, 4e-9, 0);
  const Matrix3d r = rotation_from_vector(v);
  EXPECT_EQ(r(0, 0), 1);
  EXPECT_EQ(r(0, 2), 4e-9);
  EXPECT_EQ(r(2, 0), -4e-9);
  EXPECT_EQ(r(2, 1), 3e-9);
  EXPECT_EQ(r(1, 2), -3e-9);
  EXPECT_NEAR(r(0, 1), 6e-18, 1e-32);
  EXPECT_NEAR(r(1, 0), 6e-18, 1e-32);
}

TEST(RotationFromVector, TakesTheCosineFromItsThresholdOn) {
  // 1 - cos is a few of the last bits of 1 here, so its quotient is far from a half.
  const Vector3d v(0.72e-8, 0.96e-8, 0);  // 1.2e-8 long
  const double q = (1 - std::cos(v.norm())) / v.squaredNorm();
  ASSERT_GT(std::abs(q - 0.5), 0.1);
  EXPECT_NEAR(rotation_from_vector(v)(0, 1), q * v.x() * v.y(), 1e-30);
}

TEST(RotationDerivatives, AreThoseOfFiniteDifferencesColumnByColumn) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> component(-2, 2);
  int checks = 0;
  for (int n = 0; n < 50; ++n) {
    const Vector3d v(component(random), component(random), component(random));
    const auto derivatives = rotation_derivatives(v);
    for (int k = 0; k < 3; ++k) {
      const double h = 1e-5;
      const Vector3d step = h * Vector3d::Unit(k);
      const Matrix3d difference =
          (rotation_from_vector(v + step) - rotation_from_vector(v - step)) / (2 * h);
      EXPECT_LT((derivatives[static_cast<std::size_t>(k)] - difference).norm(), 1e-8);
      ++checks;
    }
  }
  EXPECT_EQ(checks, 150);
}

TEST(RotationDerivatives, AtZeroAreTheGenerators) {
  const auto derivatives = rotation_derivatives(Vector3d::Zero());
  EXPECT_EQ(derivatives[0](2, 1), 1);
  EXPECT_EQ(derivatives[0](1, 2), -1);
  EXPECT_EQ(derivatives[1](0, 2), 1);
  EXPECT_EQ(derivatives[2](1, 0), 1);
  for (const Matrix3d& d : derivatives) EXPECT_EQ(d.cwiseAbs().sum(), 2);
}

TEST(RotationDerivatives, AreThoseOfTheSeriesBelowItsThreshold) {
  // Those of I + K + K^2 / 2: entry (0, 1) is v_0 v_1 / 2 - v_2, (0, 0) is 1 - (v_1^2 + v_2^2) / 2.
  const auto derivatives = rotation_derivatives(Vector3d(3e-9, 4e-9, 0));
  EXPECT_NEAR(derivatives[0](0, 1), 2e-9, 1e-23);
  EXPECT_NEAR(derivatives[1](0, 1), 1.5e-9, 1e-23);
  EXPECT_EQ(derivatives[2](0, 1), -1);
  EXPECT_EQ(derivatives[0](0, 0), 0);
  EXPECT_NEAR(derivatives[1](0, 0), -4e-9, 1e-23);
}

TEST(VectorFromRotation, OfTheIdentityIsZero) {
  EXPECT_EQ(vector_from_rotation(Matrix3d::Identity()), Vector3d::Zero());
}

TEST(VectorFromRotation, InvertsRotationFromVectorBelowAHalfTurn) {
  std::mt19937 random(2);
  std::normal_distribution<double> component;
  int checks = 0;
  for (int n = 0; n < 200; ++n) {
    Vector3d v(component(random), component(random), component(random));
    if (v.norm() > 3.1) v *= 3.1 / v.norm();
    EXPECT_LT((vector_from_rotation(rotation_from_vector(v)) - v).norm(), 1e-9) << v.transpose();
    ++checks;
  }
  EXPECT_EQ(checks, 200);
}

TEST(VectorFromRotation, OfAHalfTurnAboutXIsPiAboutX) {
  const Matrix3d half_turn = Vector3d(1, -1, -1).asDiagonal();
  EXPECT_EQ(vector_from_rotation(half_turn), Vector3d(pi, 0, 0));
}

TEST(VectorFromRotation, LosesAHalfTurnAboutYorZ) {
  EXPECT_EQ(vector_from_rotation(Vector3d(-1, 1, -1).asDiagonal().toDenseMatrix()),
            Vector3d::Zero());
  EXPECT_EQ(vector_from_rotation(Vector3d(-1, -1, 1).asDiagonal().toDenseMatrix()),
            Vector3d::Zero());
}

TEST(VectorFromRotation, OfAHalfTurnTakesItsSignsFromTheFirstColumn) {
  const double root = std::sqrt(0.5);
  const Vector3d axis(0.5, -0.5, root);
  Matrix3d half_turn;             // 2 a a^T - I, with a trace of exactly -1
  half_turn << -0.5, -0.5, root,  //
      -0.5, -0.5, -root,          //
      root, -root, 0;
  EXPECT_LT((vector_from_rotation(half_turn) - pi * axis).norm(), 1e-7);
}

TEST(VectorFromRotation, OfAHalfTurnGoesBackwardsWhereTheAntisymmetricPartIsNegative) {
  Matrix3d half_turn = Vector3d(1, -1, -1).asDiagonal();
  half_turn(2, 1) = -1e-12;
  half_turn(1, 2) = 1e-12;
  EXPECT_EQ(vector_from_rotation(half_turn), Vector3d(-pi, 0, 0));
}

TEST(VectorFromRotation, TakesATraceAboveThreeForAShortTurn) {
  Matrix3d r = Matrix3d::Identity() * 1.001;
  r(2, 1) = 0.004;
  r(1, 2) = -0.002;
  EXPECT_LT((vector_from_rotation(r) - Vector3d(0.003, 0, 0)).norm(), 1e-18);
}

}  // namespace
}  // namespace ocpan

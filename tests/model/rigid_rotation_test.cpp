#include "model/rigid_rotation.h"

#include <cmath>
#include <limits>

#include <Eigen/LU>
#include <gtest/gtest.h>

#include "model/pose.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

TEST(ClosestRotation, OfARotationIsTheRotation) {
  const Matrix3d r = rotation_from_vector({0.4, -1.1, 0.9});
  EXPECT_LT((closest_rotation(r) - r).norm(), 1e-14);
  EXPECT_LT((closest_rotation(1e-6 * r) - r).norm(), 1e-14);
}

TEST(ClosestRotation, OfAStretchedRotationIsTheRotation) {
  const Matrix3d r = rotation_from_vector({0.4, -1.1, 0.9});
  const Matrix3d stretched = r * Vector3d(3, 2, 0.5).asDiagonal();
  EXPECT_LT((closest_rotation(stretched) - r).norm(), 1e-14);
}

TEST(ClosestRotation, OfAReflectingMatrixIsProperAllTheSame) {
  // The nearest proper rotation to diag(3, 2, -1) gives up the smallest direction.
  const Matrix3d r = closest_rotation(Vector3d(3, 2, -1).asDiagonal());
  EXPECT_NEAR(r.determinant(), 1, 1e-14);
  EXPECT_LT((r - Matrix3d::Identity()).norm(), 1e-14);
}

TEST(ClosestRotation, OfZeroIsTheIdentity) {
  EXPECT_EQ(closest_rotation(Matrix3d::Zero()), Matrix3d::Identity());
}

TEST(ClosestRotation, OfNotANumberIsNotANumberAndEnds) {
  Matrix3d m = Matrix3d::Identity();
  m(1, 2) = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(std::isnan(closest_rotation(m)(0, 0)));
  m(1, 2) = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(std::isnan(closest_rotation(m)(0, 0)));
}

TEST(RotateModel, TurnsVectorsAndAxesAndLeavesTheLens) {
  model_map model = initial_model({900, 700, 80, 0});
  model[C_0] = 4;
  model[C_2] = -1;
  model[O_th] = 2.9;
  model[O_ph] = 0.4;
  model[rho_1] = 0.2;
  model[LAMBDA] = 0.6;
  const Matrix3d r = rotation_from_vector({0.4, -1.1, 0.9});
  const model_map turned = rotate_model(model, r);
  for (parameter_name first : {C_0, H_0, V_0}) {
    EXPECT_EQ(vector_of(turned, first), Vector3d(r * vector_of(model, first)));
  }
  EXPECT_LT((direction_from_angles(turned.at(A_th), turned.at(A_ph)) -
             r * direction_from_angles(model.at(A_th), model.at(A_ph)))
                .norm(),
            1e-15);
  EXPECT_LT((direction_from_angles(turned.at(O_th), turned.at(O_ph)) -
             r * direction_from_angles(2.9, 0.4))
                .norm(),
            1e-15);
  for (parameter_name key : {rho_0, rho_1, rho_2, L, LAMBDA}) {
    EXPECT_EQ(turned.at(key), model.at(key)) << parameter_text(key);
  }
}

TEST(RotateModel, ByTheIdentityLeavesAStartModelAsItIs) {
  const model_map model = initial_model({900, 700, 80, 0});
  EXPECT_EQ(rotate_model(model, Matrix3d::Identity()), model);
}

}  // namespace
}  // namespace ocpan

#include "model/projection.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/model/distorted_models.h"

namespace ocpan {
namespace {

using Eigen::ArrayXd;
using Eigen::Index;
using Eigen::Matrix2Xd;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;
using testing::derivative_case;
using testing::derivative_cases;
using testing::distorted_model;

Matrix3Xd board(Index width, Index height, double scale) {
  Matrix3Xd points(3, width * height);
  for (Index k = 0; k < points.cols(); ++k) {
    points.col(k) << static_cast<double>(k % width) * scale, static_cast<double>(k / width) * scale,
        0;
  }
  return points;
}

// A pose before the camera of distorted_model.
const Vector3d board_rotation(2.6, 0.3, -0.2);
Vector3d board_translation(const model_map& model) {
  return vector_of(model, C_0) +
         300 * direction_from_angles(value_of(model, A_th), value_of(model, A_ph)) +
         Vector3d(-40, 30, 10);
}

// The same mapping written as plainly as possible, one point at a time.
Eigen::Vector2d project_plainly(const Vector3d& point, const model_map& m, const Vector3d& r,
                                const Vector3d& t, bool clamped) {
  const Vector3d a = direction_from_angles(m.at(A_th), m.at(A_ph));
  const Vector3d o = direction_from_angles(m.at(O_th), m.at(O_ph));
  const Vector3d d = rotation_from_vector(r) * point + t - vector_of(m, C_0);
  const double law = m.at(L);
  const double zeta = d.dot(o);
  const Vector3d lam = d - zeta * o;
  double theta = std::atan2(lam.norm(), zeta);
  if (clamped) theta = std::min(theta, pi / (2 * std::abs(law)));
  double chi = law > 0 ? std::tan(law * theta) / law : std::sin(law * theta) / law;
  const double zeta2 = lam.norm() / chi;
  if (clamped) {
    const double c = monotonic_limit(m.at(rho_0), m.at(rho_1), m.at(rho_2));
    chi = std::max(-c, std::min(c, chi));
  }
  const double mu = m.at(rho_0) + m.at(rho_1) * std::pow(chi, 2) + m.at(rho_2) * std::pow(chi, 4);
  const Vector3d q = (1 + mu) * lam + zeta2 * o;
  return Eigen::Vector2d(q.dot(vector_of(m, H_0)), q.dot(vector_of(m, V_0))) / q.dot(a);
}

struct pixels {
  ArrayXd x, y;
};

pixels project(const Matrix3Xd& points, const model_map& model, const Vector3d& rotation,
               const Vector3d& translation) {
  pixels result;
  project_points(result.x, result.y, points, model, rotation, translation);
  return result;
}

pixels project_unclamped(const Matrix3Xd& points, const model_map& model, const Vector3d& rotation,
                         const Vector3d& translation) {
  pixels result;
  derivative_map dx, dy;
  project_points(result.x, result.y, dx, dy, points, model, rotation, translation, true);
  return result;
}

TEST(ProjectPoints, AgreesWithThePlainFormulasOnAWholeBoard) {
  int checks = 0;
  for (int lens : {0, 1}) {
    const model_map model = distorted_model(lens);
    const Matrix3Xd points = board(13, 11, 10);  // more than one block
    const Vector3d t = board_translation(model);
    const pixels got = project(points, model, board_rotation, t);
    const pixels unclamped = project_unclamped(points, model, board_rotation, t);
    ASSERT_EQ(got.x.size(), points.cols());
    for (Index k = 0; k < points.cols(); ++k) {
      const auto expected = project_plainly(points.col(k), model, board_rotation, t, true);
      EXPECT_NEAR(got.x[k], expected.x(), 1e-9);
      EXPECT_NEAR(got.y[k], expected.y(), 1e-9);
      EXPECT_NEAR(unclamped.x[k], expected.x(), 1e-9);
      ++checks;
    }
  }
  EXPECT_EQ(checks, 2 * 13 * 11);
}

TEST(ProjectPoints, WithoutDistortionIsTheLinearCamera) {
  const model_map model = initial_model({1000, 800, 90, 0});
  Matrix3Xd points(3, 2);
  points << 1, -2,  //
      2, 3,         //
      -4, -5;
  const pixels got = project(points, model, Vector3d::Zero(), Vector3d::Zero());
  // x = (500 X - 500 Z) / -Z, y = (-500 Y - 400 Z) / -Z
  EXPECT_NEAR(got.x[0], 500 * 1 / 4.0 + 500, 1e-9);
  EXPECT_NEAR(got.y[0], -500 * 2 / 4.0 + 400, 1e-9);
  EXPECT_NEAR(got.x[1], 500 * -2 / 5.0 + 500, 1e-9);
  EXPECT_NEAR(got.y[1], -500 * 3 / 5.0 + 400, 1e-9);
}

TEST(ProjectPoints, OfAnEqualAreaFisheyeGoesWithTwiceTheSineOfHalfTheAngle) {
  const model_map model = initial_model({1000, 1000, 180, 1});
  const double scale = 500 / std::sqrt(2.0);
  for (double angle : {0.1, 0.8, 1.5, 1.9}) {
    Matrix3Xd point(3, 1);
    point << 7 * std::sin(angle), 0, -7 * std::cos(angle);
    const pixels got = project(point, model, Vector3d::Zero(), Vector3d::Zero());
    EXPECT_NEAR(got.x[0], 500 + scale * 2 * std::sin(angle / 2), 1e-9) << angle;
    EXPECT_NEAR(got.y[0], 500, 1e-9);
  }
}

TEST(ProjectPoints, OfTheSamePointDoesntDependOnItsPlaceInABlock) {
  const model_map model = distorted_model(1);
  const Vector3d t = board_translation(model);
  const Matrix3Xd points = board(20, 10, 7);
  const pixels all = project(points, model, board_rotation, t);
  for (Index k : {0, 1, 63, 64, 65, 127, 128, 199}) {
    const pixels one = project(points.col(k), model, board_rotation, t);
    EXPECT_EQ(one.x[0], all.x[k]);
    EXPECT_EQ(one.y[0], all.y[k]);
  }
}

TEST(ProjectPoints, ClampsTheAngleOfAPointBehindARectilinearCamera) {
  const model_map model = initial_model({1000, 1000, 90, 0});
  Matrix3Xd point(3, 1);
  point << 1, 0, 1;  // 135 degrees off the axis
  const pixels clamped = project(point, model, Vector3d::Zero(), Vector3d::Zero());
  const pixels free = project_unclamped(point, model, Vector3d::Zero(), Vector3d::Zero());
  EXPECT_GT(clamped.x[0], 1e12);    // as good as 90 degrees
  EXPECT_NEAR(free.x[0], 0, 1e-9);  // the mirrored point: tan(135 degrees) is -1
}

TEST(ProjectPoints, ClampsTheRadiusWhereThePolynomialTurns) {
  model_map model = initial_model({1000, 1000, 90, 0});
  model[rho_1] = -0.3;
  const double c = std::sqrt(1 / 0.9);  // of 1 / (3 * 0.3)
  Matrix3Xd point(3, 1);
  point << 2, 0, -1;  // chi is 2, beyond c
  const pixels clamped = project(point, model, Vector3d::Zero(), Vector3d::Zero());
  const pixels free = project_unclamped(point, model, Vector3d::Zero(), Vector3d::Zero());
  EXPECT_NEAR(clamped.x[0], 500 + 500 * 2 * (1 - 0.3 * c * c), 1e-9);
  EXPECT_NEAR(free.x[0], 500 + 500 * 2 * (1 - 0.3 * 4), 1e-9);
}

TEST(ProjectPoints, WithALawOfZeroHasAnInfiniteRadius) {
  model_map model = initial_model({1000, 1000, 90, 0});
  model[L] = 0;
  model[O_th] = pi - 0.1;  // off A, so that the sideways part alone still meets the picture
  Matrix3Xd point(3, 1);
  point << 1, 0, -2;
  const Vector3d o = direction_from_angles(pi - 0.1, 0);
  const Vector3d d = point.col(0);
  const Vector3d lam = d - d.dot(o) * o;  // zeta2 = m / infinity = 0, so Q = lam
  const pixels clamped = project(point, model, Vector3d::Zero(), Vector3d::Zero());
  EXPECT_NEAR(clamped.x[0], lam.dot(vector_of(model, H_0)) / -lam.z(), 1e-6);
  // Unclamped, 0 times infinity in mu.
  const pixels free = project_unclamped(point, model, Vector3d::Zero(), Vector3d::Zero());
  EXPECT_TRUE(std::isnan(free.x[0]));
}

TEST(ProjectPoints, JustAboveALawOfZeroHasTheSineInTheDenominator) {
  model_map model = initial_model({1000, 1000, 90, 0});
  model[L] = 5e-9;
  Matrix3Xd point(3, 1);
  point << 1, 0, -2;
  model[O_th] = pi - 0.1;
  const Vector3d o = direction_from_angles(pi - 0.1, 0);
  const Vector3d d = point.col(0);
  const Vector3d lam = d - d.dot(o) * o;
  const double theta = std::atan2(lam.norm(), d.dot(o));
  const double chi = theta / std::sin(5e-9 * theta);  // 2e8
  const Vector3d q = lam + lam.norm() / chi * o;
  const pixels got = project(point, model, Vector3d::Zero(), Vector3d::Zero());
  EXPECT_NEAR(got.x[0], q.dot(vector_of(model, H_0)) / -q.z(), 1e-6);
}

TEST(ProjectPoints, OnTheDistortionAxisIsNotANumber) {
  model_map model = initial_model({1000, 1000, 90, 1});
  model[O_th] = 0;  // exactly (0, 0, 1)
  Matrix3Xd point(3, 1);
  point << 0, 0, 3;
  const pixels got = project(point, model, Vector3d::Zero(), Vector3d::Zero());
  EXPECT_TRUE(std::isnan(got.x[0]));
  EXPECT_TRUE(std::isnan(got.y[0]));
}

TEST(ProjectPoints, PassesNotANumberOn) {
  const model_map model = distorted_model(1);
  Matrix3Xd points = board(2, 1, 10);
  points(1, 0) = std::numeric_limits<double>::quiet_NaN();
  const pixels got = project(points, model, board_rotation, board_translation(model));
  EXPECT_TRUE(std::isnan(got.x[0]));
  EXPECT_TRUE(std::isfinite(got.x[1]));
}

TEST(ProjectPoints, PassesALawThatIsNotANumberOn) {
  model_map model = distorted_model(1);
  model[L] = std::numeric_limits<double>::quiet_NaN();
  const pixels got = project(board(2, 1, 10), model, board_rotation, board_translation(model));
  EXPECT_TRUE(std::isnan(got.x[0]));
  EXPECT_TRUE(std::isnan(got.y[0]));
}

TEST(ProjectPoints, TakesAMissingParameterForZeroAndLeavesTheModelAlone) {
  model_map model = initial_model({1000, 1000, 90, 0});
  const pixels with = project(board(3, 3, 1), model, Vector3d::Zero(), Vector3d(0.1, 0.2, -9));
  for (parameter_name key : {C_0, C_1, C_2, rho_0, rho_1, rho_2, A_ph, O_ph}) model.erase(key);
  const pixels without = project(board(3, 3, 1), model, Vector3d::Zero(), Vector3d(0.1, 0.2, -9));
  EXPECT_TRUE((with.x == without.x).all());
  EXPECT_EQ(model.size(), 9u);
}

// --- derivatives ---

// The model and pose with one parameter moved.
pixels moved(const Matrix3Xd& points, model_map model, Vector3d rotation, Vector3d translation,
             int key, double step) {
  if (key >= T_0) {
    translation[key - T_0] += step;
  } else if (key >= R_0) {
    rotation[key - R_0] += step;
  } else if (key == LAMBDA) {
    model[L] = law_from_lambda(lambda_from_law(model[L]) + step);
  } else {
    model[static_cast<parameter_name>(key)] += step;
  }
  return project_unclamped(points, model, rotation, translation);
}

double value_of_key(const model_map& model, const Vector3d& rotation, const Vector3d& translation,
                    int key) {
  if (key >= T_0) return translation[key - T_0];
  if (key >= R_0) return rotation[key - R_0];
  if (key == LAMBDA) return lambda_from_law(model.at(L));
  return model.at(static_cast<parameter_name>(key));
}

TEST(ProjectPoints, HasTheDerivativesOfFiniteDifferencesColumnByColumn) {
  int columns = 0;
  for (const derivative_case& c : derivative_cases()) {
    const Matrix3Xd points = board(9, 6, 25);
    const Vector3d t = board_translation(c.model);
    ArrayXd x, y;
    derivative_map dx, dy;
    project_points(x, y, dx, dy, points, c.model, board_rotation, t, true);
    for (int key = 0; key <= T_2; ++key) {
      if (!derivative_map::contains(key)) continue;
      const double h =
          1e-5 * std::max(1.0, std::abs(value_of_key(c.model, board_rotation, t, key)));
      // Around L = 0.05 LAMBDA is 0.0025: a step that stays well on its side.
      const double step = key == LAMBDA ? 1e-2 * h : h;
      const pixels up = moved(points, c.model, board_rotation, t, key, step);
      const pixels down = moved(points, c.model, board_rotation, t, key, -step);
      const ArrayXd by_x = (up.x - down.x) / (2 * step), by_y = (up.y - down.y) / (2 * step);
      const double x_scale = dx[key].abs().maxCoeff(), y_scale = dy[key].abs().maxCoeff();
      const double largest = std::max(x_scale, y_scale);
      ASSERT_GT(largest, 0) << key;
      const double tolerance = key == LAMBDA ? 1e-5 : 1e-6;
      EXPECT_LT((dx[key] - by_x).abs().maxCoeff(), tolerance * largest) << c.name << " " << key;
      EXPECT_LT((dy[key] - by_y).abs().maxCoeff(), tolerance * largest) << c.name << " " << key;
      ++columns;
    }
  }
  EXPECT_EQ(columns, 5 * 23);
}

TEST(DerivativeMap, HoldsEveryKeyButTheLaw) {
  EXPECT_FALSE(derivative_map::contains(L));
  EXPECT_FALSE(derivative_map::contains(-1));
  EXPECT_FALSE(derivative_map::contains(24));
  int held = 0;
  for (int key = 0; key < 24; ++key) held += derivative_map::contains(key);
  EXPECT_EQ(held, 23);
}

}  // namespace
}  // namespace ocpan

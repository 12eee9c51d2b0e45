#include "model/board_pose.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "model/projection.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix2Xd;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;

Matrix3Xd board(double scale) {
  Matrix3Xd points(3, 54);
  for (Index k = 0; k < 54; ++k) {
    points.col(k) << static_cast<double>(k % 9) * scale, static_cast<double>(k / 9) * scale, 0;
  }
  return points;
}

Matrix2Xd seen(const Matrix3Xd& points, const model_map& model, const ModelPose& pose) {
  Eigen::ArrayXd x, y;
  project_points(x, y, points, model, pose.rotation, pose.translation);
  Matrix2Xd pixels(2, points.cols());
  pixels.row(0) = x.matrix().transpose();
  pixels.row(1) = y.matrix().transpose();
  return pixels;
}

void expect_same_pose(const ModelPose& got, const ModelPose& expected, double tolerance) {
  EXPECT_LT((rotation_from_vector(got.rotation) - rotation_from_vector(expected.rotation)).norm(),
            tolerance);
  EXPECT_LT((got.translation - expected.translation).norm(),
            tolerance * expected.translation.norm());
}

TEST(EstimateBoardPose, FindsThePoseThatMadeThePixels) {
  int checks = 0;
  for (int lens : {0, 1}) {
    const model_map model = initial_model({960, 720, lens == 0 ? 80.0f : 180.0f, lens});
    for (const Vector3d& rotation : {Vector3d(3.0, 0.1, -0.2), Vector3d(2.6, 0.4, 0.3),
                                     Vector3d(-2.5, 0.9, 0.1), Vector3d(0.3, -0.4, 0.2)}) {
      const ModelPose truth{rotation, Vector3d(-80, 40, -400)};
      const Matrix3Xd points = board(25);
      expect_same_pose(estimate_board_pose({seen(points, model, truth)}, points, {model}), truth,
                       1e-5);
      ++checks;
    }
  }
  EXPECT_EQ(checks, 8);
}

TEST(EstimateBoardPose, SettlesTheSignByTheRays) {
  // The board lies before the camera, whichever sign the linear solution came with.
  const model_map model = initial_model({960, 720, 80, 0});
  const Matrix3Xd points = board(25);
  for (double x : {-300.0, -100.0, 100.0}) {
    const ModelPose truth{Vector3d(3.0, 0.1, -0.2), Vector3d(x, 40, -500)};
    EXPECT_LT(estimate_board_pose({seen(points, model, truth)}, points, {model}).translation.z(),
              0);
  }
}

TEST(EstimateBoardPose, MeasuresFromTheRigsOrigin) {
  model_map model = initial_model({960, 720, 80, 0});
  model[C_0] = 70;
  model[C_1] = -20;
  model[C_2] = 15;
  const Matrix3Xd points = board(25);
  const ModelPose truth{Vector3d(2.9, 0.2, 0.1), Vector3d(-30, 40, -450)};
  expect_same_pose(estimate_board_pose({seen(points, model, truth)}, points, {model}), truth, 1e-5);
}

TEST(EstimateBoardPose, FitsAllViewsThoughTheFirstAloneChoseTheStart) {
  model_map first = initial_model({960, 720, 80, 0}), second = first;
  second[C_0] = 120;
  const Matrix3Xd points = board(25);
  const ModelPose truth{Vector3d(2.9, 0.2, 0.1), Vector3d(-30, 40, -450)};
  const Matrix2Xd in_first = seen(points, first, truth);
  // The second view contradicts the first by two pixels to the right.
  Matrix2Xd in_second = seen(points, second, truth);
  in_second.row(0).array() += 2;
  const ModelPose alone = estimate_board_pose({in_first}, points, {first});
  const ModelPose both = estimate_board_pose({in_first, in_second}, points, {first, second});
  expect_same_pose(alone, truth, 1e-5);
  const double alone_error = (seen(points, second, alone) - in_second).squaredNorm();
  const double both_error = (seen(points, second, both) - in_second).squaredNorm();
  EXPECT_LT(both_error, 0.5 * alone_error);
  EXPECT_GT((seen(points, first, both) - in_first).squaredNorm(), 1);
}

// The gradient of the sum of the squared residuals of all points by the six numbers of a pose,
// by central differences.
Eigen::Matrix<double, 6, 1> error_gradient(const Matrix2Xd& pixels, const Matrix3Xd& points,
                                           const model_map& model, const ModelPose& pose) {
  Eigen::Matrix<double, 6, 1> gradient;
  for (int k = 0; k < 6; ++k) {
    const double step = k < 3 ? 1e-6 : 1e-4;
    ModelPose up = pose, down = pose;
    (k < 3 ? up.rotation[k] : up.translation[k - 3]) += step;
    (k < 3 ? down.rotation[k] : down.translation[k - 3]) -= step;
    gradient[k] = ((seen(points, model, up) - pixels).squaredNorm() -
                   (seen(points, model, down) - pixels).squaredNorm()) /
                  (2 * step);
  }
  return gradient;
}

TEST(EstimateBoardPose, KeepsPointsThatAreFarOff) {
  const model_map model = initial_model({960, 720, 80, 0});
  const Matrix3Xd points = board(25);
  const ModelPose truth{Vector3d(3.1, 0.4, 0.3), Vector3d(-80, 40, -400)};
  int checks = 0;
  for (const double off : {60.0, 100.0, 200.0}) {  // pixels, each enough for five steps or more
    Matrix2Xd pixels = seen(points, model, truth);
    pixels(0, 8) += off;
    const ModelPose pose = estimate_board_pose({pixels}, points, {model});
    // The pose of the least squares of all the points, some way from that of the others.
    EXPECT_LT(error_gradient(pixels, points, model, pose).norm(),
              1e-3 * error_gradient(pixels, points, model, truth).norm());
    EXPECT_GT((pose.translation - truth.translation).norm(), 1) << off;
    ++checks;
  }
  EXPECT_EQ(checks, 3);
}

TEST(EstimateBoardPose, FacingTheCameraSquarelyIsAHalfTurn) {
  const model_map model = initial_model({960, 720, 80, 0});
  const Matrix3Xd points = board(25);
  const ModelPose truth{Vector3d(pi, 0, 0), Vector3d(-100, 60, -400)};
  expect_same_pose(estimate_board_pose({seen(points, model, truth)}, points, {model}), truth, 1e-5);
}

TEST(EstimateBoardPose, EndsOnNotANumber) {
  const model_map model = initial_model({960, 720, 80, 0});
  Matrix2Xd pixels = Matrix2Xd::Constant(2, 54, 100.0);
  pixels(0, 7) = std::numeric_limits<double>::quiet_NaN();
  const ModelPose pose = estimate_board_pose({pixels}, board(25), {model});
  EXPECT_TRUE(std::isnan(pose.rotation.x()) || std::isnan(pose.translation.x()));
}

TEST(EstimateBoardPose, EndsOnABoardSeenAsOnePointOrALine) {
  const model_map model = initial_model({960, 720, 80, 0});
  estimate_board_pose({Matrix2Xd::Constant(2, 54, 100.0)}, board(25), {model});
  Matrix2Xd line(2, 54);
  for (Index k = 0; k < 54; ++k) line.col(k) << 100.0 + 5.0 * static_cast<double>(k), 300;
  estimate_board_pose({line}, board(25), {model});
  estimate_board_pose({line}, Matrix3Xd::Zero(3, 54), {model});
}

}  // namespace
}  // namespace ocpan

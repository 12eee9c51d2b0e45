#include <stdexcept>

#include <gtest/gtest.h>

#include "calfiles/selen360_cal_file.h"
#include "src/result_codes.h"
#include "tests/calfiles/wide_lens.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::temp_folder;
using testing::wide_lens;

// A calibration of one camera, read with the radius 2.
selen360_cal_file one_camera(const model_map& model) {
  const temp_folder folder;
  EXPECT_EQ(selen360_cal_file({model}, {{640, 480, 90, 0}}).save(folder.file("rig.cal")), 0);
  selen360_cal_file file(2.0f);
  EXPECT_EQ(file.load(folder.file("rig.cal").c_str()), 0);
  return file;
}

point_block face_of(const Eigen::Vector3d& direction) {
  point_block face;
  for (Eigen::MatrixXd& row : face) row = direction.transpose().replicate(256, 1);
  return face;
}

TEST(CalFileProject, SeesTheSphereFromTheCamerasCentre) {
  const selen360_cal_file file = one_camera(wide_lens(100, 0, 0));
  std::vector<point_block> directions{face_of({0.6, 0, -0.8}), face_of({0.6, 0, -0.8})};
  directions[1][7].row(9) << 0.48, 0.6, -0.64;
  std::vector<point_block> pixels;
  EXPECT_EQ(file.cam_project(directions, 0, pixels), code::success);
  ASSERT_EQ(pixels.size(), 2u);
  // The point is (1200, 0, -1600), 1100 beside and 1600 before the camera.
  int checked = 0;
  for (const Eigen::MatrixXd& row : pixels[0]) {
    ASSERT_EQ(row.rows(), 256);
    ASSERT_EQ(row.cols(), 2);
    EXPECT_NEAR((row.col(0).array() - 540.0).abs().maxCoeff(), 0, 2e-3);
    EXPECT_NEAR((row.col(1).array() - 240.0).abs().maxCoeff(), 0, 2e-3);
    ++checked;
  }
  EXPECT_EQ(checked, 256);
  // (960, 1200, -1280) less the centre is (860, 1200, -1280).
  EXPECT_NEAR(pixels[1][7](9, 0), 320 + 320 * 860.0 / 1280, 2e-3);
  EXPECT_NEAR(pixels[1][7](9, 1), 240 - 320 * 1200.0 / 1280, 2e-3);
}

TEST(CalFileProject, AppendsToItsOutput) {
  const selen360_cal_file file = one_camera(wide_lens(0, 0, 0));
  std::vector<point_block> pixels(1);
  pixels[0][0] = Eigen::MatrixXd::Constant(1, 1, 7.0);
  EXPECT_EQ(file.cam_project({face_of({0.6, 0, -0.8})}, 0, pixels), code::success);
  ASSERT_EQ(pixels.size(), 2u);
  EXPECT_EQ(pixels[0][0](0, 0), 7.0);
  EXPECT_EQ(pixels[1][255].rows(), 256);
}

TEST(CalFileProject, NoFacesGiveNoPositions) {
  std::vector<point_block> pixels;
  EXPECT_EQ(one_camera(wide_lens(0, 0, 0)).cam_project({}, 0, pixels), code::success);
  EXPECT_TRUE(pixels.empty());
}

TEST(CalFileProject, NoFacesNeedNoCamera) {
  std::vector<point_block> pixels(2);
  EXPECT_EQ(selen360_cal_file(1.0f).cam_project({}, 0, pixels), code::success);
  EXPECT_EQ(one_camera(wide_lens(0, 0, 0)).cam_project({}, 99, pixels), code::success);
  EXPECT_EQ(pixels.size(), 2u);
}

TEST(CalFileUnproject, SubtractsTheCentreFromThePointOnTheSphere) {
  Eigen::MatrixX2d pixels(2, 2);
  pixels << 560, 240,  // the ray (0.6, 0, -0.8)
      80, 240;         // the ray (-0.6, 0, -0.8)
  Eigen::MatrixX3d points = Eigen::MatrixX3d::Zero(5, 3);
  EXPECT_EQ(one_camera(wide_lens(100, -50, 20)).cam_unproject(points, pixels, 0), code::success);
  Eigen::MatrixX3d expected(2, 3);
  expected << 1200 - 100, 50, -1600 - 20,  //
      -1200 - 100, 50, -1600 - 20;
  ASSERT_EQ(points.rows(), 2);
  EXPECT_NEAR((points - expected).cwiseAbs().maxCoeff(), 0, 2e-2);
}

TEST(CalFileUnproject, NoPixelsGiveNoPoints) {
  Eigen::MatrixX3d points = Eigen::MatrixX3d::Zero(5, 3);
  EXPECT_EQ(one_camera(wide_lens(0, 0, 0)).cam_unproject(points, Eigen::MatrixX2d(0, 2), 0),
            code::success);
  EXPECT_EQ(points.rows(), 0);
}

TEST(CalFileUnproject, ThrowsWithoutACentre) {
  int thrown = 0;
  for (const parameter_name missing : {C_0, C_1, C_2}) {
    model_map model = wide_lens(0, 0, 0);
    model.erase(missing);
    const selen360_cal_file file = one_camera(model);
    Eigen::MatrixX3d points;
    try {
      static_cast<void>(file.cam_unproject(points, Eigen::MatrixX2d::Zero(1, 2), 0));
    } catch (const std::out_of_range& failure) {
      EXPECT_STREQ(failure.what(), "invalid map<K, T> key");
      ++thrown;
    }
  }
  EXPECT_EQ(thrown, 3);
}

}  // namespace
}  // namespace ocpan

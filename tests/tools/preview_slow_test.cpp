// The whole road of a calibration: what the device would show of a world whose panorama is
// known.

#include <cmath>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "calfiles/selen360_cal_file.h"
#include "include/oc_pan_cal.h"
#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "simulator/board_series.h"
#include "simulator/masks.h"
#include "simulator/pixel_rays.h"
#include "simulator/presets.h"
#include "simulator/world.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"
#include "tools/device_preview.h"

namespace ocpan {
namespace {

constexpr int width = 2048;   // of the panorama
constexpr float radius = 10;  // of the world, 1000 units of the rig
constexpr double overlap_degrees = 5;

// In grey levels. Bilinear interpolation of so fine a texture costs 0.8; a camera that is
// 0.2 degrees off costs 1.5 more.
constexpr double good_error = 1.5;

// Four cameras of 190 degrees in a textured world, and what their tables make of it.
class Preview : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    world_ = new seen_world;
    ASSERT_EQ(make_preset(world_->truth, "4-lens1"), "");
    const std::string folder = world_->folder.path().string();
    ASSERT_EQ(write_masks(folder, world_->truth, overlap_degrees), "");
    for (const rig_camera& camera : world_->truth.cameras) {
      cv::Mat colour;
      cv::cvtColor(render_world(camera, 1000.0 * radius), colour, cv::COLOR_GRAY2BGR);
      world_->pictures.push_back(colour);
    }
    world_->panorama = render_world_panorama(width);
  }
  static void TearDownTestSuite() {
    delete world_;
    world_ = nullptr;
  }

  static const rig_description& truth() { return world_->truth; }

  // The mean difference, in grey levels, between the true panorama and the device's with
  // these models, over all directions with weight.
  static double error_of(const rig& models) {
    const temp_folder& folder = world_->folder;
    const selen360_cal_file calibration(models, details_of(truth()));
    EXPECT_EQ(calibration.save(folder.file("rig.cal")), 0);
    EXPECT_EQ(ocPAN_LutFromCalibration(folder.file("rig.cal").c_str(), folder.file("mask").c_str(),
                                       folder.file("lut").c_str(), radius, 0, 1),
              OCPAN_SUCCESS);
    std::vector<device_camera> cameras;
    for (std::size_t i = 0; i < models.size(); ++i) {
      device_camera& camera = cameras.emplace_back();
      camera.picture = world_->pictures[i];
      EXPECT_EQ(read_device_table(camera.table, folder.file("lut_" + std::to_string(i) + ".bin")),
                "");
    }
    const device_panorama made = stitch(cameras, width, 253);
    EXPECT_GT(cv::countNonZero(made.covered), 0.7 * width * width / 2);
    cv::Mat grey, difference;
    cv::cvtColor(made.picture, grey, cv::COLOR_BGR2GRAY);
    cv::absdiff(grey, world_->panorama, difference);
    return cv::mean(difference, made.covered)[0];
  }

  static double contrast_of_world() {
    cv::Scalar mean, deviation;
    cv::meanStdDev(world_->panorama, mean, deviation);
    return deviation[0];
  }

 private:
  using temp_folder = testing::temp_folder;
  struct seen_world {
    temp_folder folder;
    rig_description truth;
    std::vector<cv::Mat> pictures;
    cv::Mat panorama;
  };
  static inline seen_world* world_ = nullptr;
};

TEST_F(Preview, GivesTheWorldBackFromTheTrueCalibration) {
  EXPECT_GT(contrast_of_world(), 50);
  const double error = error_of(models_of(truth()));
  RecordProperty("mean_error_grey_levels", std::to_string(error));
  EXPECT_LT(error, good_error);
}

TEST_F(Preview, ShowsACameraTurnedByAFifthOfADegree) {
  rig turned = models_of(truth());
  turned[1] = rotate_model(turned[1], rotation_from_vector({0, 0.2 * pi / 180, 0}));
  const double error = error_of(models_of(truth())), turned_error = error_of(turned);
  RecordProperty("mean_error_grey_levels", std::to_string(turned_error));
  EXPECT_GT(turned_error, 2 * error);
}

// The rotation that carries what a model sees of its pictures best onto what the truth sees.
Eigen::Matrix3d turn_to_truth(const model_map& found, const rig_camera& truth) {
  rig_camera camera = truth;
  camera.model = found;
  Eigen::Matrix3d sum = Eigen::Matrix3d::Zero();
  for (int row = 20; row < truth.details.height; row += 40) {
    const Eigen::Matrix3Xd from = pixel_rays(camera, row), to = pixel_rays(truth, row);
    for (Eigen::Index x = 20; x < from.cols(); x += 40) {
      if (from.col(x).allFinite() && to.col(x).allFinite()) {
        sum += to.col(x) * from.col(x).transpose();
      }
    }
  }
  return closest_rotation(sum);
}

TEST_F(Preview, GivesTheWorldBackFromTheCalibrationThatBoardsGave) {
  const testing::working_folder folder;
  ASSERT_EQ(write_board_series(truth(), folder.file("boards"), {}), "");
  qa_summary summary;
  int result = OCPAN_FAILURE;
  testing::printed_by(
      [&] { result = ocPAN_Cal(folder.file("boards/calibration.txt").c_str(), &summary); });
  ASSERT_EQ(result, OCPAN_SUCCESS);
  selen360_cal_file found(radius);
  ASSERT_EQ(found.load(folder.file("boards/found.cal").c_str()), 0);
  ASSERT_EQ(found.models().size(), truth().cameras.size());

  // The frame of a calibration is its camera 0's.
  rig models = found.models();
  const Eigen::Matrix3d turn = turn_to_truth(models[0], truth().cameras[0]);
  for (model_map& model : models) model = rotate_model(model, turn);
  const double error = error_of(models);
  RecordProperty("mean_error_grey_levels", std::to_string(error));
  EXPECT_LT(error, good_error);
}

}  // namespace
}  // namespace ocpan

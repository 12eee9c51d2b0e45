#include "calfiles/create_cal.h"

#include <string>

#include <gtest/gtest.h>

#include "calfiles/selen360_cal_file.h"
#include "src/result_codes.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::temp_folder;
using testing::write_file;

// What create_cal makes of a calibration file of this text.
struct created {
  explicit created(const std::string& text) {
    const temp_folder folder;
    write_file(folder.file("rig.cal"), text);
    printed = printed_by(
        [&] { result = create_cal(object, folder.file("rig.cal").c_str(), true, 3.0f); });
  }
  std::unique_ptr<cal> object;
  int result = 0;
  std::string printed;
};

std::string cameras(int count) {
  std::string text;
  for (int camera = 0; camera < count; ++camera) text += "Width:64 Height:48\nC_0:0 C_1:0 C_2:0\n";
  return text;
}

TEST(CreateCal, LoadsACalibrationFile) {
  const created got("Width:64 Height:48 Lens:2 Hfov:179.9\nC_0:1\n");
  EXPECT_EQ(got.result, code::success);
  EXPECT_EQ(got.printed, "");
  ASSERT_NE(dynamic_cast<selen360_cal_file*>(got.object.get()), nullptr);
  EXPECT_EQ(got.object->cam_count(), 1u);
  EXPECT_EQ(got.object->cam_hfov(0), 179);
}

TEST(CreateCal, HandsTheRadiusToTheMappings) {
  const created got(
      "Width:640 Height:480\nC_0:10 C_1:0 C_2:0 A_th:3.14159 H_0:320 H_2:-320 V_1:-320 V_2:-240 "
      "O_th:3.14159 L:1\n");
  Eigen::MatrixX3d points;
  ASSERT_EQ(got.object->cam_unproject(points, Eigen::RowVector2d(560, 240), 0), code::success);
  // 3000 along (0.6, 0, -0.8), less the centre.
  EXPECT_NEAR(points(0, 0), 1790, 0.05);
  EXPECT_NEAR(points(0, 2), -2400, 0.05);
}

TEST(CreateCal, RefusesAFileWithoutACamera) {
  const created got("");
  EXPECT_EQ(got.result, code::argument_invalid);
  EXPECT_EQ(got.printed, "Number of cameras must be in range 1..8, got: 0\n");
  EXPECT_EQ(got.object, nullptr);
}

TEST(CreateCal, TakesEightCameras) {
  const created got(cameras(8));
  EXPECT_EQ(got.result, code::success);
  EXPECT_EQ(got.object->cam_count(), 8u);
}

TEST(CreateCal, RefusesNineCameras) {
  const created got(cameras(9));
  EXPECT_EQ(got.result, code::argument_invalid);
  EXPECT_EQ(got.printed, "Number of cameras must be in range 1..8, got: 9\n");
  EXPECT_EQ(got.object, nullptr);
}

TEST(CreateCal, TellsOfAFileThatCantBeOpened) {
  const temp_folder folder;
  const std::string name = folder.file("missing.cal");
  std::unique_ptr<cal> object;
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = create_cal(object, name.c_str(), true, 1.0f); }),
            "Couldn't open: " + name + "\nLoading Calibration data failed\n");
  EXPECT_EQ(result, code::input_unusable);
}

TEST(CreateCal, KeepsWhatAMalformedFileHeld) {
  const created got("Width:64\nC_0:0\nDepth:1\n");
  EXPECT_EQ(got.result, code::content_malformed);
  EXPECT_EQ(got.printed, "parameter not recognised: Depth\nLoading Calibration data failed\n");
  ASSERT_NE(got.object, nullptr);
  EXPECT_EQ(got.object->cam_count(), 1u);
}

}  // namespace
}  // namespace ocpan

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/exports/table_run.h"
#include "tests/support/table_reader.h"

namespace {

using namespace ocpan::testing;
namespace fs = std::filesystem;

constexpr std::size_t table_bytes = 4194304;

int lut_of(const char* calibration, const char* masks, const char* outputs) {
  return ocPAN_LutFromCalibration(calibration, masks, outputs, 1.0f, 0, 0);
}

TEST(LutFromCalibration, RefusesNullStringsInSilence) {
  EXPECT_EQ(printed_by([] {
              EXPECT_EQ(lut_of(nullptr, "m", "o"), OCPAN_INVALID);
              EXPECT_EQ(lut_of("c", nullptr, "o"), OCPAN_INVALID);
              EXPECT_EQ(lut_of("c", "m", nullptr), OCPAN_INVALID);
            }),
            "");
}

TEST(LutFromCalibration, RefusesASmallRadiusOnlyWhereTheFlagIsOne) {
  table_run run("");
  fs::remove(run.calibration());
  EXPECT_EQ(run.lut(0.49f), OCPAN_INVALID);
  EXPECT_EQ(run.printed(), "");
  EXPECT_EQ(run.lut(-std::numeric_limits<float>::infinity()), OCPAN_INVALID);
  // From here on the check passes, and the missing calibration is found.
  EXPECT_EQ(run.lut(0.5f), OCPAN_INPUT);
  EXPECT_EQ(run.lut(0.49f, 1, 2), OCPAN_INPUT);
  EXPECT_EQ(run.lut(0.49f, 1, -1), OCPAN_INPUT);
  EXPECT_EQ(run.lut(0.0f, 1, 0), OCPAN_INPUT);
}

TEST(LutFromCalibration, TakesAnyFlagButZeroAsSet) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  ASSERT_EQ(run.lut(1, 1, 1), OCPAN_SUCCESS);
  const std::string small = run.output(0);
  ASSERT_EQ(run.lut(1, 0, 1), OCPAN_SUCCESS);
  EXPECT_TRUE(run.output(0) != small);
  for (const int set : {2, -1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(run.lut(1, set, 1), OCPAN_SUCCESS);
    EXPECT_TRUE(run.output(0) == small) << set;
    EXPECT_EQ(run.lut(1, 1, set), OCPAN_SUCCESS);
    EXPECT_TRUE(run.output(0) == small) << set;
  }
}

TEST(LutFromCalibration, RadiusThatIsNoNumberPasses) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  EXPECT_EQ(run.lut(std::numeric_limits<float>::quiet_NaN()), OCPAN_SUCCESS);
  EXPECT_EQ(run.output(0), std::string(table_bytes, '\0'));  // no position is a number
}

TEST(LutFromCalibration, TellsOfACalibrationThatCanNotBeLoaded) {
  table_run run("");
  fs::remove(run.calibration());
  const std::string expected =
      "Couldn't open: " + run.calibration() + "\nLoading Calibration data failed\n";
  EXPECT_EQ(run.lut(), OCPAN_INPUT);
  EXPECT_EQ(run.printed(), expected);
  EXPECT_EQ(run.lut(1.0f, 1, 0), OCPAN_INPUT);
  EXPECT_EQ(run.printed(), expected);
}

TEST(LutFromCalibration, FolderAsCalibrationCanNotBeOpened) {
  table_run run("");
  fs::remove(run.calibration());
  fs::create_directory(run.calibration());
  EXPECT_EQ(run.lut(), OCPAN_INPUT);
  EXPECT_EQ(run.printed(),
            "Couldn't open: " + run.calibration() + "\nLoading Calibration data failed\n");
}

TEST(LutFromCalibration, MalformedCalibrationIsFour) {
  table_run run("Width:1 Focus:3\n");
  EXPECT_EQ(run.lut(), OCPAN_MALFORMED);
  EXPECT_EQ(run.printed(), "parameter not recognised: Focus\nLoading Calibration data failed\n");
}

TEST(LutFromCalibration, MalformedProjectFilesKeepTheirCodes) {
  table_run projection("i w10 h10 f4\n");
  EXPECT_EQ(projection.lut(1, 1, 0), OCPAN_INVALID);
  EXPECT_EQ(projection.printed(),
            "Image projection 4 not supported (only 0,2,3)\nLoading Calibration data failed\n");
  table_run crop("i w10 h10 C1,2,3\n");
  EXPECT_EQ(crop.lut(1, 1, 0), OCPAN_MALFORMED);
  EXPECT_EQ(crop.printed(),
            "C parameter incorrectly defined - expect (2,2) got: C1,2,3\n"
            "Loading Calibration data failed\n");
  table_run copied("i w10 h10 v=0\n");
  EXPECT_EQ(copied.lut(1, 1, 0), OCPAN_INVALID);
  EXPECT_EQ(copied.printed(), "Loading Calibration data failed\n");
}

TEST(LutFromCalibration, RefusesNoneAndNineCameras) {
  table_run none("");
  EXPECT_EQ(none.lut(), OCPAN_INVALID);
  EXPECT_EQ(none.printed(), "Number of cameras must be in range 1..8, got: 0\n");
  std::string lines;
  for (int i = 0; i < 9; ++i) lines += "i w10 h10\n";
  table_run nine(lines);
  EXPECT_EQ(nine.lut(1, 1, 0), OCPAN_INVALID);
  EXPECT_EQ(nine.printed(), "Number of cameras must be in range 1..8, got: 9\n");
}

TEST(LutFromCalibration, MaskThatIsMissingEndsTheRun) {
  table_run run(linear_camera + linear_camera);
  run.set_mask(0, 255);
  write_file(run.output_name(1), "older");
  EXPECT_EQ(run.lut(), OCPAN_MALFORMED);
  EXPECT_EQ(run.printed(), "Error opening image file " + run.mask_name(1) + "\n");
  EXPECT_EQ(run.output(0).size(), table_bytes);
  EXPECT_EQ(run.output(1), "older");
}

TEST(LutFromCalibration, MaskOfAnotherSizeEndsTheRun) {
  table_run run(linear_camera);
  run.set_mask(0, 255, 201, 100);
  EXPECT_EQ(run.lut(), OCPAN_INPUT);
  EXPECT_EQ(run.printed().find("Bad or no Image Data for file " + run.mask_name(0)), 0u);
  EXPECT_NE(run.printed().find("rows=100, cols=201, width=200, height=100)\n"), std::string::npos);
  EXPECT_FALSE(fs::exists(run.output_name(0)));
}

TEST(LutFromCalibration, LaterCamerasAreNotTriedAfterAFailure) {
  table_run run(linear_camera + linear_camera + linear_camera);
  run.set_mask(0, 255);
  run.set_mask(2, 255);
  EXPECT_EQ(run.lut(), OCPAN_MALFORMED);
  EXPECT_TRUE(fs::exists(run.output_name(0)));
  EXPECT_FALSE(fs::exists(run.output_name(2)));
}

TEST(LutFromCalibration, MoreModelsThanDetailsFailAtThatCamera) {
  table_run run(linear_camera + linear_model);
  run.set_mask(0, 255);
  run.set_mask(1, 255);
  EXPECT_EQ(run.lut(), OCPAN_INVALID);
  EXPECT_EQ(run.printed(),
            "selen360_cal_file::cam_width() invalid camera id: 1\n"
            "selen360_cal_file::cam_height() invalid camera id: 1\n"
            "Width (-1) and height (-1) must be greater than zero for file: " +
                run.mask_name(1) + "\n");
}

TEST(LutFromCalibration, OutputThatCanNotBeOpenedIsThree) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  fs::create_directory(run.output_name(0));
  EXPECT_EQ(run.lut(), OCPAN_OUTPUT);
  EXPECT_EQ(run.printed(), "Error opening output file: " + run.output_name(0) + "\n");
}

#ifdef __linux__
TEST(LutFromCalibration, FullDiskIsThree) {
  table_run run(linear_camera + linear_camera);
  run.set_mask(0, 255);
  run.set_mask(1, 255);
  fs::create_symlink("/dev/full", run.output_name(1));
  EXPECT_EQ(run.lut(), OCPAN_OUTPUT);
  EXPECT_EQ(run.printed(), "Error writing output file: " + run.output_name(1) + "\n");
  EXPECT_EQ(run.output(0).size(), table_bytes);
}
#endif

// What the picture of the linear camera gives each sample of the face it looks at.
//
//   half   samples from the face's middle to its edge
void expect_linear_face(const std::string& table, double half) {
  int seen = 0, inside_seen = 0;
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b, ++seen) {
      const double x = 100 * ((b - 128) / half) + 100.03125;
      const double y = 50.03125 - 100 * ((a - 128) / half);
      const int column = static_cast<int>(x), row = static_cast<int>(y);
      const bool inside = x > -1 && column < 200 && y > -1 && row < 100;
      inside_seen += inside;
      // All white: the nearest pixel outside lies straight beyond one of the four sides.
      const int deep = inside ? std::min({column + 1, 200 - column, row + 1, 100 - row}) : 0;
      const auto got =
          read_table(table, 5, static_cast<std::size_t>(a), static_cast<std::size_t>(b));
      ASSERT_NEAR(got.x, x, 1.51 / 8192) << a << " " << b;
      ASSERT_NEAR(got.y, y, 1.51 / 8192) << a << " " << b;
      ASSERT_EQ(got.weight, static_cast<int>(deep * 1023.0 / 50 + (inside ? 0.5 : 0)));
    }
  }
  EXPECT_EQ(seen, 65536);
  EXPECT_GT(inside_seen, 8000);
}

TEST(LutFromCalibration, GivesPositionsAndWeightsOfTheSmallFace) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  EXPECT_EQ(run.lut(1.0f, 1), OCPAN_SUCCESS);
  EXPECT_EQ(run.printed(), "");
  const std::string table = run.output(0);
  ASSERT_EQ(table.size(), table_bytes);
  expect_linear_face(table, 64);
}

TEST(LutFromCalibration, GivesPositionsAndWeightsOfTheLargeFace) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  EXPECT_EQ(run.lut(1.0f, 0), OCPAN_SUCCESS);
  expect_linear_face(run.output(0), 126);
}

TEST(LutFromCalibration, StoresWholeStepsToTheBit) {
  // On the small face positions are whole multiples of 1/32 pixel: at (128, 192) of face 5
  // x = 200.03125 is 1638656 steps, y = 50.03125 is 409856, and the weight is 0.
  table_run run(linear_camera);
  run.set_mask(0, 255);
  ASSERT_EQ(run.lut(), OCPAN_SUCCESS);
  const std::size_t index = 262144 + 32 * 4096 + 2 * 1024 + 24 * 32;
  const std::uint64_t entry = (1638656ull << 37) | (409856ull << 10);
  std::string bytes;
  for (int i = 0; i < 8; ++i) bytes += static_cast<char>(entry >> (8 * i) & 0xff);
  EXPECT_EQ(run.output(0).substr(8 * index, 8), bytes);
  // At (208, 128) y = -74.96875 is -614144 steps, stored one higher.
  EXPECT_EQ(read_table(run.output(0), 5, 208, 128).y, (-614144.0 + 1) / 8192);
}

TEST(LutFromCalibration, SlotsOfZerosFillAQuarterOfTheFile) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  ASSERT_EQ(run.lut(), OCPAN_SUCCESS);
  const std::string table = run.output(0);
  for (std::size_t stripe = 0; stripe < 128; ++stripe) {
    EXPECT_EQ(table.substr((stripe * 4096 + 3072) * 8, 8192), std::string(8192, '\0')) << stripe;
  }
}

TEST(LutFromCalibration, BehindARectilinearCameraThereIsNoWeight) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  ASSERT_EQ(run.lut(), OCPAN_SUCCESS);
  const std::string table = run.output(0);
  for (std::size_t a = 0; a < 256; ++a) {
    for (std::size_t b = 0; b < 256; ++b) ASSERT_EQ(read_table(table, 4, a, b).weight, 0);
  }
}

TEST(LutFromCalibration, BlackMaskGivesPositionsWithoutWeight) {
  table_run run(linear_camera);
  run.set_mask(0, 128);
  ASSERT_EQ(run.lut(), OCPAN_SUCCESS);
  const std::string table = run.output(0);
  ASSERT_EQ(table.size(), table_bytes);
  for (std::size_t a = 0; a < 256; ++a) {
    for (std::size_t b = 0; b < 256; ++b) ASSERT_EQ(read_table(table, 5, a, b).weight, 0);
  }
  EXPECT_EQ(read_table(table, 5, 128, 128).x, 100.03125);
}

TEST(LutFromCalibration, SingleWhitePixelHasTheFullWeight) {
  cv::Mat mask = cv::Mat::zeros(100, 200, CV_8UC1);
  mask.at<unsigned char>(50, 100) = 255;
  table_run run(linear_camera);
  run.set_mask(0, mask);
  ASSERT_EQ(run.lut(), OCPAN_SUCCESS);
  const std::string table = run.output(0);
  EXPECT_EQ(read_table(table, 5, 128, 128).weight, 1023);
  EXPECT_EQ(read_table(table, 5, 128, 129).weight, 0);
}

TEST(LutFromCalibration, DirectionsStandForPointsAtTheRadius) {
  // The camera stands at (500, 0, 0): straight ahead of the rig is (-500, 0, -1000 r) of it.
  std::string camera = linear_camera;
  camera.replace(camera.find("C_0:0"), 5, "C_0:500");
  table_run run(camera);
  run.set_mask(0, 255);
  ASSERT_EQ(run.lut(1.0f), OCPAN_SUCCESS);
  EXPECT_NEAR(read_table(run.output(0), 5, 128, 128).x, 50.03125, 1.01 / 8192);
  ASSERT_EQ(run.lut(2.0f), OCPAN_SUCCESS);
  EXPECT_NEAR(read_table(run.output(0), 5, 128, 128).x, 75.03125, 1.01 / 8192);
}

TEST(LutFromCalibration, ModelWithoutParametersGivesZeros) {
  table_run run("Width:20 Height:10\nC_0:0\n");
  run.set_mask(0, 255, 20, 10);
  EXPECT_EQ(run.lut(), OCPAN_SUCCESS);
  EXPECT_EQ(run.output(0), std::string(table_bytes, '\0'));
}

TEST(LutFromCalibration, MakesTablesOfProjectFiles) {
  // Equidistant with 200 pixels per radian: (0, 1, -1) lies a quarter of pi up the picture.
  table_run run("i w400 h400 f2 v114.59155902616465\n");
  run.set_mask(0, 255, 400, 400);
  ASSERT_EQ(run.lut(0.0f, 1, 0), OCPAN_SUCCESS);
  EXPECT_EQ(run.printed(), "");
  const auto sample = read_table(run.output(0), 5, 192, 128);
  EXPECT_NEAR(sample.x, 199.5, 1.01 / 8192);
  EXPECT_NEAR(sample.y, 199.5 - 50 * std::acos(-1.0), 1.01 / 8192);
  // Row 42 of 400, of which the middle is 200 deep: 43 * 1023 / 200 + 0.5 = 220.4.
  EXPECT_EQ(sample.weight, 220);
  // Straight ahead a position has no value.
  EXPECT_EQ(read_table(run.output(0), 5, 128, 128).x, 0);
  EXPECT_EQ(read_table(run.output(0), 5, 128, 128).weight, 0);
}

TEST(LutFromCalibration, TakesBackslashesInPaths) {
  const temp_folder folder;
  const std::string base = folder.path().string() + "\\";
  write_file(folder.file("rig"), linear_camera);
  cv::imwrite(folder.file("mask_0.png"), cv::Mat(100, 200, CV_8UC1, cv::Scalar(255)));
  EXPECT_EQ(ocPAN_LutFromCalibration((base + "rig").c_str(), (base + "mask").c_str(),
                                     (base + "out").c_str(), 1.0f, 1, 1),
            OCPAN_SUCCESS);
  EXPECT_EQ(read_file(folder.file("out_0.bin")).size(), table_bytes);
}

}  // namespace

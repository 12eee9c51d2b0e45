#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "include/oc_pan_cal.h"
#include "tests/production/fixture_job.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::printed_by;

class CalProd : public ::testing::Test {
 protected:
  int run(unsigned cameras, float radius) {
    int result = 99;
    printed_ = printed_by([&] {
      result = ocPAN_CalProd(cameras, calibration_, output_, radius, images_.data(), results_);
    });
    return result;
  }

  testing::working_folder folder_;
  const char* calibration_ = "missing.txt";
  const char* output_ = "out.txt";
  std::vector<const char*> images_ = std::vector<const char*>(9, "picture.png");
  double results_[3] = {-1, -1, -1};
  std::string printed_;
};

const char* const no_calibration = "Couldn't open: missing.txt\nLoading Calibration data failed\n";

TEST_F(CalProd, TakesTwoToEightCameras) {
  for (const unsigned cameras : {0u, 1u, 9u, 4294967295u}) {
    EXPECT_EQ(run(cameras, 1), OCPAN_INVALID) << cameras;
    EXPECT_EQ(printed_, "") << cameras;
  }
  for (const unsigned cameras : {2u, 8u}) {
    EXPECT_EQ(run(cameras, 1), OCPAN_INPUT) << cameras;
    EXPECT_EQ(printed_, no_calibration) << cameras;
  }
}

TEST_F(CalProd, RefusesNullPaths) {
  calibration_ = nullptr;
  EXPECT_EQ(run(2, 1), OCPAN_INVALID);
  EXPECT_EQ(printed_, "");
  calibration_ = "missing.txt";
  output_ = nullptr;
  EXPECT_EQ(run(2, 1), OCPAN_INVALID);
  EXPECT_EQ(printed_, "");
}

TEST_F(CalProd, RefusesANullPictureAmongThoseItUses) {
  images_[1] = nullptr;
  EXPECT_EQ(run(2, 1), OCPAN_INVALID);
  EXPECT_EQ(printed_, "");
  images_[1] = "picture.png";
  images_[2] = nullptr;
  EXPECT_EQ(run(2, 1), OCPAN_INPUT);
}

TEST_F(CalProd, RefusesNoListOfPictures) {
  EXPECT_EQ(ocPAN_CalProd(2, calibration_, output_, 1, nullptr, results_), OCPAN_INVALID);
}

TEST_F(CalProd, RefusesARadiusOutOfRangeWithItsValue) {
  EXPECT_EQ(run(2, 0.1F), OCPAN_INVALID);
  EXPECT_EQ(printed_, "fixture_radius :0.2~20,current value:0.1\n");
  EXPECT_EQ(run(2, std::nextafter(0.2F, 0.0F)), OCPAN_INVALID);
  EXPECT_EQ(printed_, "fixture_radius :0.2~20,current value:0.2\n");
  EXPECT_EQ(run(2, 20.5F), OCPAN_INVALID);
  EXPECT_EQ(printed_, "fixture_radius :0.2~20,current value:20.5\n");
  EXPECT_EQ(run(2, -1), OCPAN_INVALID);
  EXPECT_EQ(printed_, "fixture_radius :0.2~20,current value:-1\n");
  EXPECT_EQ(run(2, std::numeric_limits<float>::infinity()), OCPAN_INVALID);
  EXPECT_EQ(printed_, "fixture_radius :0.2~20,current value:inf\n");
}

TEST_F(CalProd, RefusesARadiusThatIsNoNumber) {
  EXPECT_EQ(run(2, std::numeric_limits<float>::quiet_NaN()), OCPAN_INVALID);
  EXPECT_EQ(printed_, "fixture_radius :0.2~20,current value:nan\n");
}

TEST_F(CalProd, TakesBothEndsOfTheRange) {
  // 0.2 as a float is a little above 0.2.
  EXPECT_EQ(run(2, 0.2F), OCPAN_INPUT);
  EXPECT_EQ(printed_, no_calibration);
  EXPECT_EQ(run(2, 20.0F), OCPAN_INPUT);
  EXPECT_EQ(printed_, no_calibration);
}

TEST_F(CalProd, LooksAtTheRadiusBeforeThePicturesAndAfterThePaths) {
  images_[0] = nullptr;
  EXPECT_EQ(run(2, 0), OCPAN_INVALID);
  EXPECT_NE(printed_, "");
  output_ = nullptr;
  EXPECT_EQ(run(2, 0), OCPAN_INVALID);
  EXPECT_EQ(printed_, "");
}

TEST_F(CalProd, RefinesACalibration) {
  std::filesystem::create_directory("tmp");
  const rig_description description = testing::fixture_rig(2, {480, 360, 120, 1}, 60, 30);
  fixture_description fixture = suitable_fixture(description);
  fixture.cell_degrees = 7.5;
  fixture_files files;
  ASSERT_EQ(write_fixture(files, ".", description, fixture, {5, 0.05, 0.0005, 1}), "");
  calibration_ = files.disturbed_calibration.c_str();
  for (std::size_t c = 0; c < 2; ++c) images_[c] = files.pictures[c].c_str();
  EXPECT_EQ(run(2, 1), OCPAN_SUCCESS);
  EXPECT_EQ(printed_, "");
  EXPECT_TRUE(std::filesystem::exists("out.txt"));
  EXPECT_TRUE(std::filesystem::exists("tmp/Prod_QA_Measures.txt"));
  EXPECT_GT(results_[0], results_[1]);
  EXPECT_GT(results_[1], 0);
  EXPECT_LT(results_[1], 0.1);
  EXPECT_EQ(results_[2], std::floor(results_[2]));
  EXPECT_GT(results_[2], 60);
}

TEST_F(CalProd, FailsOnAPictureWithoutACorner) {
  const rig_description description = testing::fixture_rig(2, {64, 48, 120, 1}, 60, 30);
  fixture_description nothing;
  nothing.low_latitude_degrees = 88;
  nothing.high_latitude_degrees = 89;
  fixture_files files;
  ASSERT_EQ(write_fixture(files, ".", description, nothing, {}), "");
  calibration_ = files.disturbed_calibration.c_str();
  for (std::size_t c = 0; c < 2; ++c) images_[c] = files.pictures[c].c_str();
  EXPECT_EQ(run(2, 1), OCPAN_FAILURE);
  EXPECT_EQ(printed_, "");
  EXPECT_FALSE(std::filesystem::exists("out.txt"));
}

TEST_F(CalProd, PassesOnWhatAStageRefuses) {
  testing::write_file("missing.txt", "");  // a calibration without a camera
  EXPECT_EQ(run(2, 1), OCPAN_INVALID);
  EXPECT_EQ(printed_, "Number of cameras must be in range 1..8, got: 0\n");
}

}  // namespace
}  // namespace ocpan

// Fixed jobs whose files and texts must stay the same byte for byte, however the code is made
// faster. The checksums stand in fixed_jobs.txt. After a wanted change of the numbers the test
// prints the new lines.

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/core/version.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/board_corners.h"
#include "include/oc_pan_cal.h"
#include "platform/processors.h"
#include "simulator/board_series.h"
#include "simulator/masks.h"
#include "tests/production/fixture_job.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::fixture_rig;
using testing::printed_by;
using testing::read_file;
using testing::write_file;

// The checksum FNV-1a, 64 bits, of bytes.
std::string checksum(const std::string& bytes) {
  std::uint64_t sum = 14695981039346656037ull;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211ull;
  std::ostringstream text;
  text << std::hex << sum;
  return text.str();
}

std::string bytes_of(const double* values, std::size_t count) {
  std::string bytes(count * sizeof *values, '\0');
  std::memcpy(bytes.data(), values, bytes.size());
  return bytes;
}

// What isn't ours and yet decides the last bits: the C library's elementary functions, and
// OpenCV's filters and detector, both of which choose their code by the processor.
std::string foreign_numbers() {
  std::vector<double> values;
  for (int i = 1; i <= 2000; ++i) {
    const double t = i * 0.0007;
    for (const double value : {std::sin(t), std::cos(t), std::tan(t), std::atan2(t, 1 - t),
                               std::asin(t / 2), std::acos(t / 2), std::exp(-t), std::log(t)}) {
      values.push_back(value);
    }
  }
  cv::Mat board(240, 320, CV_8UC1, cv::Scalar(220));
  for (int k = 0; k < 20; k += 2) {
    const int row = k / 5, column = k % 5;
    cv::rectangle(board, {60 + 40 * column, 40 + 40 * row, 40, 40}, cv::Scalar(30), cv::FILLED);
  }
  const cv::Matx23d turn(0.96, 0.21, 3.3, -0.17, 0.97, 9.1);
  cv::warpAffine(board, board, turn, board.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
  cv::GaussianBlur(board, board, {}, 0.8);
  std::vector<cv::Point2f> corners;
  EXPECT_TRUE(find_board_corners(corners, board, {4, 3}, board_search::thorough));
  for (const cv::Point2f& corner : corners) values.insert(values.end(), {corner.x, corner.y});
  return checksum(bytes_of(values.data(), values.size())) + " OpenCV-" CV_VERSION;
}

std::map<std::string, std::string> expected_sums() {
  std::ifstream in(FIXED_JOBS_FILE);
  std::map<std::string, std::string> sums;
  std::string name, sum;
  while (in >> name && std::getline(in >> std::ws, sum)) sums[name] = sum;
  return sums;
}

// Runs a job in a working folder of its own and compares what it leaves.
class FixedJobs : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string foreign = foreign_numbers();
    if (expected_["foreign"] != foreign) {
      std::printf("foreign %s\n", foreign.c_str());
      GTEST_SKIP() << "the C library or OpenCV gives other last bits here";
    }
    std::filesystem::create_directory("tmp");
  }

  void expect_same(const std::string& name, const std::string& bytes) {
    EXPECT_FALSE(bytes.empty()) << name;
    const std::string sum = checksum(bytes);
    EXPECT_EQ(expected_[name], sum) << name << " " << sum;
    ++compared_;
  }
  // A text without the name of this run's folder.
  void expect_same_text(const std::string& name, std::string text) {
    std::string with_backslashes = folder_.path().string();
    for (char& letter : with_backslashes) letter = letter == '/' ? '\\' : letter;
    for (const std::string& path : {folder_.path().string(), with_backslashes}) {
      for (std::size_t at = text.find(path); at != text.npos; at = text.find(path)) {
        text.replace(at, path.size(), "FOLDER");
      }
    }
    expect_same(name, text);
  }

  // Calibrates a rig from rendered boards and makes both tables of what it finds.
  void calibrate_and_make_tables(const std::string& job, const rig_description& rig);
  void make_tables(const std::string& job, const std::string& calibration, int cameras,
                   int use_file_class);

  const testing::working_folder folder_;
  std::map<std::string, std::string> expected_ = expected_sums();
  int compared_ = 0;
};

rig_description two_cameras(const camera_details& details, double step_degrees) {
  rig_description description = fixture_rig(2, details, step_degrees, 0, -0.01);
  description.cameras[1].model[C_0] += 60;
  description.sets = {{"one", {0}, 5}, {"two", {1}, 5}, {"both", {0, 1}, 5}};
  description.poses.max_distance = 500;
  return description;
}

void FixedJobs::make_tables(const std::string& job, const std::string& calibration, int cameras,
                            int use_file_class) {
  const float radius = 3.5F;
  for (const int small_face : {0, 1}) {
    ASSERT_EQ(ocPAN_LutFromCalibration(calibration.c_str(), "mask", "lut", radius, small_face,
                                       use_file_class),
              OCPAN_SUCCESS);
    for (int camera = 0; camera < cameras; ++camera) {
      const std::string number = std::to_string(camera);
      expect_same(job + "-lut" + (small_face ? "-small-" : "-") + number,
                  read_file("lut_" + number + ".bin"));
    }
  }
  ASSERT_EQ(ocPAN_PolyFromCalibration(calibration.c_str(), "mask", "poly", radius, use_file_class),
            OCPAN_SUCCESS);
  for (int camera = 0; camera < cameras; ++camera) {
    const std::string number = std::to_string(camera);
    expect_same(job + "-poly-" + number, read_file("poly_" + number + ".bin"));
  }
}

void FixedJobs::calibrate_and_make_tables(const std::string& job, const rig_description& rig) {
  ASSERT_EQ(write_board_series(rig, folder_.file("series"), {}), "");
  qa_summary summary{};
  const std::string said =
      printed_by([&] { ASSERT_EQ(ocPAN_Cal("series/calibration.txt", &summary), OCPAN_SUCCESS); });
  expect_same_text(job + "-said", said);
  expect_same(job + "-cal", read_file("series/found.cal"));
  expect_same(job + "-measures", read_file("series/found.cal_QA_Measures.txt"));
  expect_same(job + "-distance", read_file("series/found.cal_distance.csv"));
  static_assert(sizeof summary == 5 * sizeof(double));
  expect_same(job + "-summary", bytes_of(&summary.max_reprojection_error, 5));
  ASSERT_EQ(write_masks(".", rig, 5), "");
  make_tables(job, "series/found.cal", 2, 1);
}

TEST_F(FixedJobs, RectilinearRig) {
  calibrate_and_make_tables("rectilinear", two_cameras({480, 360, 70, 0}, 20));
  EXPECT_EQ(compared_, 11);
}

TEST_F(FixedJobs, FisheyeRig) {
  calibrate_and_make_tables("fisheye", two_cameras({640, 480, 150, 1}, 60));
  EXPECT_EQ(compared_, 11);
}

TEST_F(FixedJobs, ProjectFile) {
  write_file("project.pto",
             "p f2 w3000 h1500 v360\n"
             "i w400 h300 f3 v140 y10 p-5 r2 a0.01 b-0.03 c0.02 d3.5 e-2.25 g0.5 t-0.75\n"
             "i w400 h300 f0 v80 y90 p3 r-4 a=0 b=0 c=0 d=0 e=0 g=0 t=0 C20,380,10,290\n");
  for (int camera = 0; camera < 2; ++camera) {
    cv::Mat mask(300, 400, CV_8UC1, cv::Scalar(0));
    cv::ellipse(mask, {190 + 10 * camera, 150}, {170, 130}, 12, 0, 360, cv::Scalar(255),
                cv::FILLED);
    ASSERT_TRUE(cv::imwrite("mask_" + std::to_string(camera) + ".png", mask));
  }
  make_tables("project", "project.pto", 2, 0);
  EXPECT_EQ(compared_, 6);
}

TEST_F(FixedJobs, MaskAndOverlay) {
  cv::Mat picture(96, 96, CV_8UC3);
  for (int row = 0; row < picture.rows; ++row) {
    for (int column = 0; column < picture.cols; ++column) {
      picture.at<cv::Vec3b>(row, column) =
          cv::Vec3b(static_cast<unsigned char>(2 * row), static_cast<unsigned char>(2 * column),
                    static_cast<unsigned char>(row ^ column));
    }
  }
  ASSERT_TRUE(cv::imwrite("square.png", picture));
  ASSERT_EQ(ocPAN_CreateOsd("square.png", "overlay.bmp", 200, 120), OCPAN_SUCCESS);
  expect_same("overlay", read_file("overlay.bmp"));
  const char* const inputs[] = {"square.png"};
  const char* const outputs[] = {"mask.yuv"};
  ASSERT_EQ(ocPAN_MaskTransform(1, inputs, outputs), OCPAN_SUCCESS);
  expect_same("mask", read_file("mask.yuv"));
}

TEST_F(FixedJobs, ProductionRun) {
  // Each worker draws random numbers of its own, so their number tells in the result.
  if (processor_count() != 2) GTEST_SKIP() << "the checksums are those of two processors";
  const rig_description rig = fixture_rig(2, {640, 480, 120, 1}, 60, 30);
  const fixture_description fixture = suitable_fixture(rig);
  fixture_files files;
  ASSERT_EQ(write_fixture(files, ".", rig, fixture, {2, 0.05, 0.0005, 1}), "");
  const char* const pictures[] = {files.pictures[0].c_str(), files.pictures[1].c_str()};
  std::array<double, 3> results{};
  std::srand(1);
  ASSERT_EQ(ocPAN_CalProd(2, files.disturbed_calibration.c_str(), "refined.cal", 1, pictures,
                          results.data()),
            OCPAN_SUCCESS);
  expect_same("production-cal", read_file("refined.cal"));
  expect_same("production-measures", read_file("tmp/Prod_QA_Measures.txt"));
  expect_same("production-results", bytes_of(results.data(), results.size()));
}

}  // namespace
}  // namespace ocpan

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "model/parameters.h"
#include "tests/exports/table_run.h"
#include "tests/production/fixture_job.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::table_run;
using testing::write_file;

const std::vector<const char*> breaking_numbers = {"0",    "-0",    "1e300",  "-1e300",
                                                   "1e-8", "-1e-9", "1e-300", "-4.9e-324"};

// The model's text with one of its numbers replaced.
std::string with_number(std::string model, parameter_name key, const std::string& number) {
  const std::string name = std::string(parameter_text(key)) + ":";
  const std::size_t begin = model.find(name) + name.size();
  return model.replace(begin, model.find_first_of(" \n", begin) - begin, number);
}

// Every model with one number of these, and some that break as a whole.
std::vector<std::string> breaking_models(const std::string& model) {
  std::vector<std::string> models;
  for (int key = 0; key <= L; ++key) {
    for (const char* number : breaking_numbers) {
      models.push_back(with_number(model, static_cast<parameter_name>(key), number));
    }
  }
  models.push_back(with_number(model, H_0, "-100"));  // a mirrored picture
  models.push_back(with_number(with_number(model, H_0, "0"), V_1, "0"));
  models.push_back(with_number(with_number(model, A_th, "0"), O_th, "0"));
  models.push_back(with_number(with_number(model, A_th, "1.5707963267948966"), O_th, "0"));
  models.push_back(with_number(with_number(model, rho_0, "-1"), rho_2, "-1e300"));
  models.push_back("C_0:0 C_1:0 C_2:0\n");
  return models;
}

bool is_code(int result) { return result >= OCPAN_FAILURE && result <= OCPAN_INVALID; }

TEST(BreakingNumbers, GiveACodeAndWholePolygons) {
  int runs = 0;
  for (const std::string& model : breaking_models(testing::linear_model)) {
    table_run run(testing::linear_details + model);
    run.set_mask(0, 255);
    const int result = run.poly();
    EXPECT_TRUE(is_code(result)) << model;
    EXPECT_EQ(run.output(0).size(), result == OCPAN_SUCCESS ? 1536u : 0u) << model;
    ++runs;
  }
  EXPECT_GT(runs, 17 * 8);
}

TEST(BreakingNumbers, GiveACodeAndWholeTables) {
  int runs = 0;
  for (const std::string& model : breaking_models(testing::linear_model)) {
    if (++runs % 3 != 0) continue;  // each takes a while
    table_run run(testing::linear_details + model);
    run.set_mask(0, 255);
    const int result = run.lut();
    EXPECT_TRUE(is_code(result)) << model;
    EXPECT_EQ(run.output(0).size(), result == OCPAN_SUCCESS ? 4194304u : 0u) << model;
  }
  EXPECT_GT(runs, 17 * 8);
}

TEST(BreakingNumbers, InMasksGiveACodeAndWholeFiles) {
  std::vector<cv::Mat> masks;
  cv::Mat one = cv::Mat::zeros(100, 200, CV_8UC1);
  one.at<unsigned char>(99, 199) = 255;
  masks.push_back(one);
  cv::Mat columns = cv::Mat::zeros(100, 200, CV_8UC1);
  for (int x = 0; x < 200; x += 2) columns.col(x) = 255;
  masks.push_back(columns);
  cv::Mat rows = cv::Mat::zeros(100, 200, CV_8UC1);
  for (int y = 1; y < 100; y += 2) rows.row(y) = 255;
  masks.push_back(rows);
  cv::Mat noise(100, 200, CV_8UC1);
  cv::RNG(1).fill(noise, cv::RNG::UNIFORM, 0, 256);
  masks.push_back(noise);
  masks.push_back(noise > 254);
  for (const cv::Mat& mask : masks) {
    table_run run(testing::linear_camera);
    run.set_mask(0, mask);
    EXPECT_EQ(run.lut(), OCPAN_SUCCESS);
    EXPECT_EQ(run.output(0).size(), 4194304u);
    EXPECT_EQ(run.poly(), OCPAN_SUCCESS);
    EXPECT_EQ(run.output(0).size(), 1536u);
    const std::string input = run.mask_name(0);
    const std::string output = run.output_name(0);
    const char* const input_name = input.c_str();
    const char* const output_name = output.c_str();
    EXPECT_EQ(ocPAN_MaskTransform(1, &input_name, &output_name), OCPAN_SUCCESS);
    EXPECT_EQ(run.output(0).size(), 2u * 200 * 100);
  }
}

TEST(BreakingNumbers, GiveAProductionRunACode) {
  const testing::working_folder folder;
  const rig_description description = testing::fixture_rig(2, {96, 72, 120, 1}, 60, 30);
  fixture_description fixture = suitable_fixture(description);
  fixture.cell_degrees = 15;
  fixture_files files;
  ASSERT_EQ(write_fixture(files, ".", description, fixture, {5, 0.05, 0.0005, 1}), "");
  const std::string good = read_file(files.disturbed_calibration);
  const std::size_t last_line = good.rfind('\n', good.size() - 2) + 1;
  const std::vector<const char*> pictures = {files.pictures[0].c_str(), files.pictures[1].c_str()};
  int runs = 0;
  for (const std::string& model : breaking_models(good.substr(last_line))) {
    if (++runs % 4 != 0) continue;  // each takes a while
    write_file("rig.txt", good.substr(0, last_line) + model);
    std::filesystem::remove("out.txt");
    int result = 99;
    printed_by(
        [&] { result = ocPAN_CalProd(2, "rig.txt", "out.txt", 1, pictures.data(), nullptr); });
    EXPECT_TRUE(is_code(result)) << model;
    EXPECT_EQ(std::filesystem::exists("out.txt"), result == OCPAN_SUCCESS) << model;
  }
  EXPECT_GT(runs, 17 * 8);
}

TEST(BreakingNumbers, TwoCamerasThatAreTheSameGiveAProductionRunACode) {
  const testing::working_folder folder;
  const rig_description description = testing::fixture_rig(2, {96, 72, 120, 1}, 0, 0);
  fixture_description fixture = suitable_fixture(testing::fixture_rig(2, {96, 72, 120, 1}, 60, 0));
  fixture.cell_degrees = 15;
  fixture_files files;
  ASSERT_EQ(write_fixture(files, ".", description, fixture, {0, 0, 0, 1}), "");
  const std::vector<const char*> pictures = {files.pictures[0].c_str(), files.pictures[0].c_str()};
  EXPECT_TRUE(is_code(
      ocPAN_CalProd(2, files.true_calibration.c_str(), "out.txt", 1, pictures.data(), nullptr)));
}

}  // namespace
}  // namespace ocpan

#include "tools/prod_run.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/production/fixture_job.h"
#include "tests/tools/tool_process.h"
#include "tools/prod_stage.h"

namespace ocpan {
namespace {

using testing::fixture_job;
using testing::printed_by;
using testing::read_file;
using testing::run_here;
using testing::working_folder;
using testing::write_file;

// Small pictures of two cameras, rendered once for all tests.
const fixture_job& rendered_job() {
  static const testing::temp_folder folder;
  static const fixture_job job = [] {
    const rig_description rig = testing::fixture_rig(2, {480, 360, 120, 1}, 60, 30);
    fixture_description fixture = suitable_fixture(rig);
    fixture.cell_degrees = 7.5;
    return fixture_job(rig, fixture, {0.7 * 7.5, 0.05, 0.0005, 1}, folder.path().string());
  }();
  return job;
}

// The job in a folder of its own, run by the tool as built.
class ProdRun : public ::testing::Test {
 protected:
  ProdRun() {
    const fixture_files& files = rendered_job().files();
    options_.job = {files.disturbed_calibration, "refined.txt", 1, files.pictures};
  }
  void run() {
    out_ = printed_by([&] {
      ::testing::internal::CaptureStderr();
      code_ = run_prod(options_, TOOL_PATH);
      err_ = ::testing::internal::GetCapturedStderr();
    });
  }
  static bool has(const std::string& printed, const std::string& text) {
    return printed.find(text) != std::string::npos;
  }

  const working_folder folder_;
  prod_options options_;
  int code_ = -1;
  std::string out_;
  std::string err_;
};

TEST_F(ProdRun, TellsResultsReportPicturesAndVerdict) {
  options_.log = "line.csv";
  options_.serial = "A1";
  run();
  EXPECT_EQ(code_, 0) << err_;
  EXPECT_EQ(err_, "");
  EXPECT_TRUE(has(out_, "Mean reprojection error     0.0"));
  EXPECT_TRUE(has(out_, read_file("tmp/Prod_QA_Measures.txt"))) << out_;
  EXPECT_TRUE(has(out_, "Debug pictures in tmp: 10\n  0.ori_point_0.jpg\n"));
  EXPECT_TRUE(has(out_, "\n  3.matches_01_1.jpg\nVerdict: good\n"));
  EXPECT_TRUE(std::filesystem::exists("refined.txt"));
  EXPECT_TRUE(has(read_file("line.csv"), ",A1,good,0,0.0"));
}

TEST_F(ProdRun, EndsBadOutsideTheLimits) {
  write_file("limits.json", R"({"reprojection_mean": {"max": 0.001}})");
  options_.limits = "limits.json";
  run();
  EXPECT_EQ(code_, exit_outside_limits);
  EXPECT_TRUE(has(err_, "oc_pan: bad: reprojection_mean is ")) << err_;
  EXPECT_TRUE(has(out_, "Verdict: bad\n"));
}

TEST_F(ProdRun, WritesTheOutcomeForPrograms) {
  write_file("limits.json", R"({"pair_reprojection_mean": {"max": 0.0001}})");
  options_.limits = "limits.json";
  options_.json = "run.json";
  options_.serial = "A1";
  run();
  ASSERT_EQ(code_, 11) << err_;
  const auto json = nlohmann::json::parse(read_file("run.json"));
  EXPECT_EQ(json.at("exit_code"), 11);
  EXPECT_EQ(json.at("verdict"), "bad");
  EXPECT_EQ(json.at("serial"), "A1");
  ASSERT_EQ(json.at("reasons").size(), 1u);
  EXPECT_TRUE(has(err_, "bad: " + json.at("reasons")[0].get<std::string>()));
  EXPECT_GT(json.at("measures").at("point_count").get<double>(), 20);
  EXPECT_EQ(json.at("measures").at("pair_reprojection_mean").size(), 1u);
  EXPECT_EQ(json.at("measures").at("cam_delta_max").size(), 2u);
}

TEST_F(ProdRun, RefusesToReplaceItsFilesByTheJson) {
  for (const std::string& name : {options_.job.calibration, options_.job.output}) {
    options_.json = name;
    run();
    EXPECT_EQ(code_, 3) << name;
    EXPECT_TRUE(has(err_, "--json names the ")) << err_;
  }
}

TEST_F(ProdRun, IsDoubtfulWhenNothingHadToMove) {
  options_.job.calibration = rendered_job().files().true_calibration;
  run();
  EXPECT_EQ(code_, exit_doubtful);
  EXPECT_TRUE(has(err_, "oc_pan: doubtful: no camera was moved")) << err_;
}

TEST_F(ProdRun, LeavesNothingOfAnEarlierRunAfterAFailure) {
  std::filesystem::create_directory("tmp");
  write_file("tmp/Prod_QA_Measures.txt", "old");
  write_file("tmp/3.matches_01_0.jpg", "old");
  write_file("tmp/mine.jpg", "mine");
  options_.job.calibration = "none.txt";
  options_.log = "line.csv";
  options_.serial = "A1";
  run();
  EXPECT_EQ(code_, 2) << err_;
  EXPECT_FALSE(std::filesystem::exists("tmp/Prod_QA_Measures.txt"));
  EXPECT_FALSE(std::filesystem::exists("tmp/3.matches_01_0.jpg"));
  EXPECT_TRUE(std::filesystem::exists("tmp/mine.jpg"));
  EXPECT_FALSE(std::filesystem::exists("refined.txt"));
  EXPECT_TRUE(has(read_file("line.csv"), ",A1,failed,2,,"));
}

TEST_F(ProdRun, WarnsOfTheOutputOfAnEarlierRun) {
  write_file("refined.txt", "old");
  options_.job.calibration = "none.txt";
  run();
  EXPECT_EQ(read_file("refined.txt"), "old");
  EXPECT_TRUE(has(err_, "no calibration was written, refined.txt is of an earlier run")) << err_;
}

TEST_F(ProdRun, RefusesToReplaceAnInput) {
  write_file("old.txt", "x");
  options_.job.calibration = "old.txt";
  options_.job.output = "./old.txt";
  run();
  EXPECT_EQ(code_, 3);
  EXPECT_EQ(read_file("old.txt"), "x");
}

TEST_F(ProdRun, RefusesUnknownLimitsAheadOfTheRun) {
  write_file("limits.json", R"({"speed": {"max": 1}})");
  options_.limits = "limits.json";
  run();
  EXPECT_EQ(code_, 4);
  EXPECT_TRUE(has(err_, "no measure speed")) << err_;
  options_.limits = "none.json";
  run();
  EXPECT_EQ(code_, 2);
}

TEST(ProdCommand, RefusesWrongUsage) {
  EXPECT_EQ(run_here("prod a b c d").code, 64);                     // no radius
  EXPECT_EQ(run_here("prod --radius 21 a b c d").code, 64);         // too far
  EXPECT_EQ(run_here("prod --radius 1 a b c").code, 64);            // one picture
  EXPECT_EQ(run_here("prod --radius 1 --log l a b c d").code, 64);  // no serial
  EXPECT_EQ(run_here("prod --radius 1 a b 1 2 3 4 5 6 7 8 9").code, 64);
}

TEST(ProdCommand, HelpsWithExamples) {
  const auto run = run_here("prod --help");
  EXPECT_EQ(run.code, 0);
  EXPECT_NE(run.out.find("Examples:\n  oc_pan prod --radius 1"), std::string::npos);
}

TEST(ProdStage, IsToldByThePictures) {
  EXPECT_EQ(prod_stage({}), "reading the pictures, looking for corners ...");
  EXPECT_EQ(prod_stage({"0.ori_point_0.jpg"}), "corners found, looking for cells ...");
  EXPECT_EQ(prod_stage({"0.ori_point_0.jpg", "3.matches_01_0.jpg"}),
            "rotations found, refining the calibration ...");
}

}  // namespace
}  // namespace ocpan

#include "tools/prod_log.h"

#include <filesystem>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::temp_folder;
using testing::write_file;

prod_measures some_measures() {
  prod_measures m;
  m.radius_min = 999;
  m.radius_max = 1001;
  m.reprojection_max = 0.5;
  m.reprojection_mean = 0.25;
  m.point_count = 80;
  m.delta_mean = 0.125;
  m.delta_max = 0.75;
  m.pair_count = {50, 30};
  m.pair_radius_min = {999, 1000};
  m.pair_radius_max = {1001, 1000};
  m.pair_reprojection_max = {0.5, 0.4};
  m.pair_reprojection_mean = {0.25, 0.2};
  m.cam_delta_mean = {0, 0.25, 0.3};
  m.cam_delta_max = {0, 0.75, 0.6};
  return m;
}

std::string problem_of(const std::string& json) {
  std::vector<measure_limit> limits;
  return read_limits(limits, json);
}

std::vector<std::string> outside(const std::string& json) {
  std::vector<measure_limit> limits;
  EXPECT_EQ(read_limits(limits, json), "");
  return outside_limits(limits, some_measures());
}

TEST(ProductionLimits, HoldOnTheirBounds) {
  EXPECT_TRUE(outside(R"({"reprojection_mean": {"min": 0.25, "max": 0.25}})").empty());
  EXPECT_TRUE(outside("{}").empty());
}

TEST(ProductionLimits, TellWhatIsOutside) {
  const auto texts = outside(R"({"reprojection_mean": {"max": 0.2}})");
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0], "reprojection_mean is 0.25, allowed is -inf to 0.2");
}

TEST(ProductionLimits, HoldForEveryPairAndCamera) {
  const auto pairs = outside(R"({"pair_point_count": {"min": 40}})");
  ASSERT_EQ(pairs.size(), 1u);
  EXPECT_EQ(pairs[0], "pair_point_count 1 is 30, allowed is 40 to inf");
  EXPECT_EQ(outside(R"({"cam_delta_mean": {"max": 0.1}})").size(), 2u);
}

TEST(ProductionLimits, AreInMetresForRadii) {
  EXPECT_TRUE(outside(R"({"radius_max_metres": {"min": 1, "max": 1.002}})").empty());
}

TEST(ProductionLimits, RefuseWhatIsNoNumber) {
  prod_measures m = some_measures();
  m.reprojection_mean = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(outside_limits({{"reprojection_mean", -1, 1}}, m).size(), 1u);
}

TEST(ProductionLimits, AreRefusedByName) {
  EXPECT_EQ(problem_of(R"({"speed": {"max": 1}})").find("there is no measure speed; "), 0u);
  EXPECT_EQ(problem_of(R"({"delta_max": {"most": 1}})"), "delta_max has the unknown key most");
  EXPECT_EQ(problem_of(R"({"delta_max": {"max": "1"}})"), "max of delta_max is no number");
  EXPECT_EQ(problem_of(R"({"delta_max": {"min": 2, "max": 1}})"),
            "delta_max has a min above its max");
  EXPECT_EQ(problem_of(R"({"delta_max": 1})").find("delta_max needs "), 0u);
  EXPECT_EQ(problem_of(R"({"delta_max": {}})").find("delta_max needs "), 0u);
  EXPECT_EQ(problem_of("{"), "it is no JSON");
  EXPECT_EQ(problem_of("[]").find("it is no object"), 0u);
}

TEST(ProductionLog, HasARowOfAllMeasures) {
  EXPECT_EQ(log_header(2),
            "time,serial,verdict,exit_code,reprojection_mean,reprojection_max,point_count,"
            "radius_min_metres,radius_max_metres,delta_mean,delta_max,matched_pairs,"
            "pair_reprojection_mean_0,pair_reprojection_max_0,pair_point_count_0,"
            "pair_radius_min_metres_0,pair_radius_max_metres_0,cam_delta_mean_0,cam_delta_mean_1,"
            "cam_delta_max_0,cam_delta_max_1");
  // Three cameras have three pairs; the third had no match.
  EXPECT_EQ(log_row({"now", "A1", "good", 0, some_measures()}, 3),
            "now,A1,good,0,0.25,0.5,80,0.999,1.001,0.125,0.75,2,0.25,0.2,,0.5,0.4,,50,30,,"
            "0.999,1,,1.001,1,,0,0.25,0.3,0,0.75,0.6");
}

TEST(ProductionLog, LeavesTheMeasuresOfAFailureEmpty) {
  EXPECT_EQ(log_row({"now", "A1", "failed", 255, std::nullopt}, 2),
            "now,A1,failed,255" + std::string(17, ','));
}

TEST(ProductionLog, QuotesWhatWouldBreakARow) {
  EXPECT_EQ(log_row({"", "a,\"b\"\nc", "", 0, std::nullopt}, 2).substr(0, 15),
            ",\"a,\"\"b\"\"\nc\",,0");
}

TEST(ProductionLog, StartsWithTheHeaderAndGrowsByARow) {
  const temp_folder folder;
  const std::string log = folder.file("line.csv");
  const prod_log_entry entry = {"now", "A1", "failed", 2, std::nullopt};
  for (int unit = 0; unit < 2; ++unit) {
    EXPECT_EQ(obstacle_to_log(log, 2), "");
    EXPECT_TRUE(append_to_log(log, entry, 2));
  }
  const std::string row = log_row(entry, 2) + "\n";
  EXPECT_EQ(read_file(log), log_header(2) + "\n" + row + row);
}

TEST(ProductionLog, EndsALineThatWasLeftOpen) {
  const temp_folder folder;
  const std::string log = folder.file("line.csv");
  write_file(log, log_header(2));
  const prod_log_entry entry = {"now", "A1", "failed", 2, std::nullopt};
  EXPECT_TRUE(append_to_log(log, entry, 2));
  EXPECT_EQ(read_file(log), log_header(2) + "\n" + log_row(entry, 2) + "\n");
}

TEST(ProductionLog, RefusesTheLogOfAnotherRig) {
  const temp_folder folder;
  const std::string log = folder.file("line.csv");
  write_file(log, log_header(3) + "\n");
  EXPECT_NE(obstacle_to_log(log, 2).find("has other columns"), std::string::npos);
  EXPECT_NE(obstacle_to_log(folder.file("no/line.csv"), 2), "");
}

TEST(ProductionLog, TellsWhenItCantBeWritten) {
  const temp_folder folder;
  EXPECT_FALSE(append_to_log(folder.file("no/line.csv"), {}, 2));
}

}  // namespace
}  // namespace ocpan

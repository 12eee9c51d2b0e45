#include "tools/prod_verdict.h"

#include <cmath>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "production/production_report.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

// Two cameras and the one pair of a good run.
prod_measures good_run() {
  prod_measures m;
  m.radius_min = 999;
  m.radius_max = 1001;
  m.reprojection_max = 0.5;
  m.reprojection_mean = 0.25;
  m.point_count = 80;
  m.delta_mean = 0.125;
  m.delta_max = 0.75;
  m.pair_count = {80};
  m.pair_radius_min = {999};
  m.pair_radius_max = {1001};
  m.pair_reprojection_max = {0.5};
  m.pair_reprojection_mean = {0.25};
  m.cam_delta_mean = {0.001, 0.25};
  m.cam_delta_max = {0.002, 0.75};
  return m;
}

// Whether the run is doubted once, in words that hold the text.
void expect_doubt(const prod_measures& measures, const std::string& text) {
  const std::vector<std::string> doubts = doubts_about(measures, 2);
  ASSERT_EQ(doubts.size(), 1u);
  EXPECT_NE(doubts[0].find(text), std::string::npos) << doubts[0];
}

TEST(ProductionVerdict, HasNoDoubtAboutAGoodRun) {
  EXPECT_TRUE(doubts_about(good_run(), 2).empty());
}

TEST(ProductionVerdict, DoubtsAMeanErrorAboveHalfAPixel) {
  prod_measures m = good_run();
  m.reprojection_mean = 0.5;
  EXPECT_TRUE(doubts_about(m, 2).empty());
  m.reprojection_mean = 0.51;
  expect_doubt(m, "the mean error is 0.51 pixels, above 0.5");
}

TEST(ProductionVerdict, DoubtsAFarTurnOnlyTogetherWithAnError) {
  prod_measures m = good_run();
  m.delta_max = 0.91;
  EXPECT_TRUE(doubts_about(m, 2).empty());
  m.reprojection_mean = 0.31;
  expect_doubt(m, "features moved by up to 0.91 cells");
  m.delta_max = 0.9;
  EXPECT_TRUE(doubts_about(m, 2).empty());
}

TEST(ProductionVerdict, DoubtsWhatIsNoNumber) {
  prod_measures m = good_run();
  m.reprojection_mean = std::numeric_limits<double>::quiet_NaN();
  expect_doubt(m, "the mean error is nan");
}

TEST(ProductionVerdict, DoubtsAPairWithFewMatches) {
  prod_measures m = good_run();
  m.pair_count = {80, 20};
  EXPECT_TRUE(doubts_about(m, 2).empty());
  m.pair_count = {80, 18};
  expect_doubt(m, "pair 1 has only 9 matches");
}

TEST(ProductionVerdict, DoubtsTooFewMatchesInAll) {
  for (const auto& [cameras, fewest] : {std::pair{2, 6}, {4, 12}, {6, 19}, {8, 25}}) {
    prod_measures m = good_run();
    const auto n = static_cast<std::size_t>(cameras);
    m.point_count = static_cast<std::uint32_t>(2 * fewest);
    EXPECT_TRUE(doubts_about(m, n).empty()) << cameras;
    m.point_count -= 2;
    EXPECT_EQ(doubts_about(m, n).size(), 1u) << cameras;
  }
}

TEST(ProductionVerdict, DoubtsASearchThatMovedNothing) {
  prod_measures m = good_run();
  m.cam_delta_mean = {0.02, 0.02};
  expect_doubt(m, "no camera was moved");
  m.cam_delta_mean = {0.02, 0.021};
  EXPECT_TRUE(doubts_about(m, 2).empty());
}

TEST(ProductionReportReader, ReadsWhatTheLibraryWrote) {
  const testing::working_folder folder;
  std::filesystem::create_directory("tmp");
  prod_measures m = good_run();
  m.pair_radius_min = {std::numeric_limits<double>::infinity()};
  m.pair_radius_max = {-std::numeric_limits<double>::infinity()};
  write_production_report(m, 2);
  std::ifstream in("tmp/Prod_QA_Measures.txt");
  const auto read = read_production_report(in);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->reprojection_mean, 0.25);
  EXPECT_EQ(read->reprojection_max, 0.5);
  EXPECT_EQ(read->point_count, 80u);
  EXPECT_DOUBLE_EQ(read->radius_min, 999);
  EXPECT_DOUBLE_EQ(read->radius_max, 1001);
  EXPECT_EQ(read->delta_mean, 0.125);
  EXPECT_EQ(read->delta_max, 0.75);
  EXPECT_EQ(read->pair_count, m.pair_count);
  EXPECT_EQ(read->pair_reprojection_mean, m.pair_reprojection_mean);
  EXPECT_EQ(read->pair_reprojection_max, m.pair_reprojection_max);
  EXPECT_EQ(read->pair_radius_min, m.pair_radius_min);
  EXPECT_EQ(read->pair_radius_max, m.pair_radius_max);
  EXPECT_EQ(read->cam_delta_mean, m.cam_delta_mean);
  EXPECT_EQ(read->cam_delta_max, m.cam_delta_max);
}

TEST(ProductionReportReader, RefusesABrokenReport) {
  for (const char* text :
       {"", "Camera Number : 2\n",
        " ---------Total QA Measures--------- \nAverage Reprojection Error : 1\n"}) {
    std::istringstream in(text);
    EXPECT_FALSE(read_production_report(in)) << text;
  }
}

}  // namespace
}  // namespace ocpan

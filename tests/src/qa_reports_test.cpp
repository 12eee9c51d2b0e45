#include "src/qa_reports.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <locale>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_text;
using testing::temp_folder;
using testing::write_file;

constexpr double infinity = std::numeric_limits<double>::infinity();

// The one filled bin of a histogram of one distance.
std::size_t bin_of(const histogram& counts) {
  EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0), 1);
  return static_cast<std::size_t>(std::find(counts.begin(), counts.end(), 1) - counts.begin());
}

// The fine and the coarse bin of a distance.
std::pair<std::size_t, std::size_t> bins_of(double distance, int coarse_step, int range) {
  const auto families = qa_histograms({{distance}}, coarse_step, range);
  EXPECT_EQ(families.fine[0], families.fine[1]);
  EXPECT_EQ(families.coarse[0], families.coarse[1]);
  return {bin_of(families.fine[0]), bin_of(families.coarse[0])};
}

using bins = std::pair<std::size_t, std::size_t>;

TEST(QaHistograms, TheLargeScaleHasFiftyAndTenBins) {
  const auto families = qa_histograms({}, 1000, 10000);
  ASSERT_EQ(families.fine.size(), 1u);
  ASSERT_EQ(families.coarse.size(), 1u);
  EXPECT_EQ(families.fine[0], histogram(50, 0));
  EXPECT_EQ(families.coarse[0], histogram(10, 0));
}

TEST(QaHistograms, TheSmallScaleHasFifteenAndSixBins) {
  const auto families = qa_histograms({}, 500, 3000);
  EXPECT_EQ(families.fine[0].size(), 15u);
  EXPECT_EQ(families.coarse[0].size(), 6u);
}

TEST(QaHistograms, BinsBeginAtTheirLowEnd) {
  EXPECT_EQ(bins_of(0, 1000, 10000), (bins{0, 0}));
  EXPECT_EQ(bins_of(199.999, 1000, 10000), (bins{0, 0}));
  EXPECT_EQ(bins_of(200, 1000, 10000), (bins{1, 0}));
  EXPECT_EQ(bins_of(999.9, 1000, 10000), (bins{4, 0}));
  EXPECT_EQ(bins_of(1000, 1000, 10000), (bins{5, 1}));
  EXPECT_EQ(bins_of(2999, 500, 3000), (bins{14, 5}));
}

TEST(QaHistograms, WhatLiesBeyondTheRangeCountsInTheLastBin) {
  EXPECT_EQ(bins_of(9999.999, 1000, 10000), (bins{49, 9}));
  EXPECT_EQ(bins_of(10000, 1000, 10000), (bins{49, 9}));
  EXPECT_EQ(bins_of(25000, 1000, 10000), (bins{49, 9}));
  EXPECT_EQ(bins_of(3500, 500, 3000), (bins{14, 5}));
  EXPECT_EQ(bins_of(1e300, 500, 3000), (bins{14, 5}));
  EXPECT_EQ(bins_of(infinity, 500, 3000), (bins{14, 5}));
}

TEST(QaHistograms, WhatIsNoDistanceCountsInTheFirstBin) {
  EXPECT_EQ(bins_of(-1, 1000, 10000), (bins{0, 0}));
  EXPECT_EQ(bins_of(-2500, 1000, 10000), (bins{0, 0}));
  EXPECT_EQ(bins_of(-infinity, 1000, 10000), (bins{0, 0}));
  EXPECT_EQ(bins_of(std::nan(""), 1000, 10000), (bins{0, 0}));
}

TEST(QaHistograms, TheTotalStandsBehindTheSets) {
  const auto families = qa_histograms({{100, 150}, {}, {100, 700}}, 500, 3000);
  ASSERT_EQ(families.fine.size(), 4u);
  EXPECT_EQ(families.fine[0][0], 2);
  EXPECT_EQ(families.fine[1], histogram(15, 0));
  EXPECT_EQ(families.fine[2][0], 1);
  EXPECT_EQ(families.fine[2][3], 1);
  EXPECT_EQ(families.fine[3][0], 3);
  EXPECT_EQ(families.fine[3][3], 1);
  ASSERT_EQ(families.coarse.size(), 4u);
  EXPECT_EQ(families.coarse[3][0], 3);
  EXPECT_EQ(families.coarse[3][1], 1);
}

// A report of sets that saw boards at these distances.
run_report report_of(const std::vector<std::vector<double>>& distances) {
  run_report report;
  report.min_distance = infinity;
  for (const std::vector<double>& set : distances) {
    const auto [low, high] = std::minmax_element(set.begin(), set.end());
    report.entry_distances.push_back(set);
    report.entry_flags.emplace_back(set.size(), true);
    report.entry_min_distance.push_back(*low);
    report.entry_max_distance.push_back(*high);
    report.min_distance = std::min(report.min_distance, *low);
    report.max_distance = std::max(report.max_distance, *high);
    report.entry_average_error.push_back(0);
    report.entry_max_error.push_back(0);
    report.entry_matched_points.push_back(0);
    report.entry_cameras.push_back({report.entry_cameras.size()});
  }
  return report;
}

std::vector<double> ratios_of(run_report& report, int coarse_step, int range) {
  const auto families = qa_histograms(report.entry_distances, coarse_step, range);
  return qa_ratios(families.fine, families.coarse, coarse_step, range, report);
}

TEST(QaRatios, GrowWithTheFilledBinsAndTheSpread) {
  run_report report = report_of({{100, 300, 700}, {2500, 2600}});
  const auto ratios = ratios_of(report, 500, 3000);
  ASSERT_EQ(ratios.size(), 3u);
  // Fine bins 0, 1, 3 and coarse bins 0, 1; fine 12, 13 and coarse 5; then all of them.
  EXPECT_DOUBLE_EQ(ratios[0], (3 / 15.0 + 2 / 6.0) * 600 / 300);
  EXPECT_DOUBLE_EQ(ratios[1], (2 / 15.0 + 1 / 6.0) * 100 / 300);
  EXPECT_DOUBLE_EQ(ratios[2], (5 / 15.0 + 3 / 6.0) * 2500 / 300);
  EXPECT_EQ(report.total_dist_ratio, ratios[2]);
  EXPECT_EQ(report.minimum_dist_ratio, ratios[1]);
}

TEST(QaRatios, TakeTheRangeOfTheLargeScale) {
  run_report report = report_of({{1000, 5000}});
  // Two of 50 fine bins, two of 10 coarse ones; 10000 / range is 1.
  EXPECT_DOUBLE_EQ(ratios_of(report, 1000, 10000)[0], (2 / 50.0 + 2 / 10.0) * 4);
}

TEST(QaRatios, ASingleSetIsTheMinimumAndTheTotal) {
  run_report report = report_of({{1000, 5000}});
  const auto ratios = ratios_of(report, 1000, 10000);
  EXPECT_EQ(ratios[0], ratios[1]);
  EXPECT_EQ(report.minimum_dist_ratio, ratios[0]);
  EXPECT_EQ(report.total_dist_ratio, ratios[0]);
}

TEST(QaRatios, TheTotalIsNoCandidateForTheMinimum) {
  run_report report = report_of({{1000, 5000}});
  report.max_distance = report.min_distance;
  static_cast<void>(ratios_of(report, 1000, 10000));
  EXPECT_EQ(report.total_dist_ratio, 0);
  EXPECT_GT(report.minimum_dist_ratio, 0);
}

TEST(QaRatios, ASetWithoutBoardsMakesTheMinimumZero) {
  run_report report = report_of({{1000, 5000}, {-1.0}});
  const auto ratios = ratios_of(report, 1000, 10000);
  EXPECT_EQ(ratios[1], 0);
  EXPECT_EQ(report.minimum_dist_ratio, 0);
}

TEST(QaRatios, AreZeroWithoutASet) {
  run_report report;
  report.minimum_dist_ratio = 5;
  EXPECT_EQ(ratios_of(report, 1000, 10000), std::vector<double>{0.0});
  EXPECT_EQ(report.minimum_dist_ratio, 0);
  EXPECT_EQ(report.total_dist_ratio, 0);
  report.max_distance = infinity;  // makes a total that isn't 0
  static_cast<void>(ratios_of(report, 1000, 10000));
  EXPECT_EQ(report.minimum_dist_ratio, 0);
}

// Three sets: camera 0 alone, the pair 0 and 1, and a triple that found no board.
run_report three_sets() {
  run_report report = report_of({{100, 300.5}, {1000}, {-1}});
  report.entry_flags = {{true, false}, {true}, {false}};
  report.entry_cameras = {{0}, {0, 1}, {0, 1, 2}};
  report.min_distance = 100;
  report.max_distance = 1000;
  report.average_error = 0.25;
  report.max_error = 1.0 / 3;
  report.matched_points = 1234567;
  report.entry_average_error = {0.5, 0.125, -1};
  report.entry_max_error = {2, 1e-7, -1};
  report.entry_matched_points = {54, 108, -1};
  return report;
}

std::string table_of(run_report report, int last_lens) {
  const temp_folder folder;
  EXPECT_EQ(printed_by([&] { write_qa_reports(folder.file("rig"), last_lens, report, 3); }), "");
  return read_text(folder.file("rig_distance.csv"));
}

std::string measures_of(run_report report) {
  const temp_folder folder;
  write_qa_reports(folder.file("rig"), 2, report, 3);
  return read_text(folder.file("rig_QA_Measures.txt"));
}

TEST(DistanceTable, HoldsRowsPerBoardAndPerBin) {
  std::string expected =
      "----Cam 0----,,,,----Pair 01----,,,,\n"
      "0,true,100.000000,,0,true,1000.000000,,0,false,-1.000000,,\n"
      "1,false,300.500000,,,,,,,,,,\n"
      ",,,,,,,,,,,,\n"
      "\n"
      "Distance Histogram\n"
      "----Cam 0----,,,,----Pair 01----,,,,----Total----,,,,\n"
      ",[0 - 200),1,,,[0 - 200),0,,,[0 - 200),1,,,[0 - 200),2,,\n"
      ",[200 - 400),1,,,[200 - 400),0,,,[200 - 400),0,,,[200 - 400),1,,\n"
      ",[400 - 600),0,,,[400 - 600),0,,,[400 - 600),0,,,[400 - 600),0,,\n"
      ",[600 - 800),0,,,[600 - 800),0,,,[600 - 800),0,,,[600 - 800),0,,\n"
      ",[800 - 1000),0,,,[800 - 1000),0,,,[800 - 1000),0,,,[800 - 1000),0,,\n"
      ",[1000 - 1200),0,,,[1000 - 1200),1,,,[1000 - 1200),0,,,[1000 - 1200),1,,\n";
  for (int low = 1200; low < 3000; low += 200) {
    const std::string cell =
        ",[" + std::to_string(low) + " - " + std::to_string(low + 200) + "),0,,";
    expected += cell + cell + cell + cell + "\n";
  }
  EXPECT_EQ(table_of(three_sets(), 2), expected);
}

TEST(DistanceTable, HasFiftyBinsUnlessTheLastLensIsTwo) {
  for (const int lens : {0, 1}) {
    const std::string table = table_of(three_sets(), lens);
    EXPECT_NE(table.find(",[9800 - 10000),"), std::string::npos);
    EXPECT_EQ(table.find(",[10000 - "), std::string::npos);
  }
  EXPECT_NE(table_of(three_sets(), 2).find(",[2800 - 3000),"), std::string::npos);
  EXPECT_EQ(table_of(three_sets(), 2).find(",[3000 - "), std::string::npos);
}

TEST(DistanceTable, OfNoSetHoldsTheTotalAlone) {
  const std::string expected =
      "\n"
      "\n"
      "\n"
      "Distance Histogram\n"
      "----Total----,,,,\n"
      ",[0 - 200),0,,\n"
      ",[200 - 400),0,,\n";
  EXPECT_EQ(table_of({}, 2).substr(0, expected.size()), expected);
}

TEST(QaMeasures, ListTheTotalAndEachSet) {
  // Fine 3 of 15, coarse 1 and 2 of 6: bins of set 0 are 0, 1; of set 1 fine 5, coarse 2; the
  // total has fine 0, 1, 5 and coarse 0, 2.
  // Set 0: (2/15 + 1/6) 200.5 / 300 = 0.2005; total: (3/15 + 2/6) 900 / 300 = 1.6.
  EXPECT_EQ(measures_of(three_sets()),
            "Camera Number : 3\n"
            "Calibration Sets Number : 3\n"
            "\n"
            " ---------Total QA Measures--------- \n"
            "Average Reprojection Error : 0.25\n"
            "Maximum Reprojection Error : 0.333333\n"
            "Matched Point Count        : 1234567\n"
            "Total Dist Ratio           : 1.6\n"
            "Minimum Dist Ratio         : 0\n"
            "\n"
            "\n"
            " ---------Each QA Measures--------- \n"
            "----Camera 0\n"
            "    Average Reprojection Error : 0.5\n"
            "    Maximum Reprojection Error : 2\n"
            "    Matched Point Count        : 54\n"
            "    Dist Ratio                 : 0.2005\n"
            "\n"
            "\n"
            "----Pair 01\n"
            "    Average Reprojection Error : 0.125\n"
            "    Maximum Reprojection Error : 1e-07\n"
            "    Matched Point Count        : 108\n"
            "    Dist Ratio                 : 0\n"
            "\n"
            "\n"
            "    Average Reprojection Error : -1\n"
            "    Maximum Reprojection Error : -1\n"
            "    Matched Point Count        : -1\n"
            "    Dist Ratio                 : 0\n"
            "\n"
            "\n");
}

TEST(QaReports, LeaveTheRatiosInTheReport) {
  const temp_folder folder;
  run_report report = three_sets();
  write_qa_reports(folder.file("rig"), 2, report, 3);
  EXPECT_DOUBLE_EQ(report.total_dist_ratio, 1.6);
  EXPECT_EQ(report.minimum_dist_ratio, 0);
}

TEST(QaReports, PayNoHeedToTheHostsLocale) {
  struct grouped : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::string table = table_of(three_sets(), 2);
  const std::string measures = measures_of(three_sets());
  const std::locale before = std::locale::global({std::locale::classic(), new grouped});
  EXPECT_EQ(table_of(three_sets(), 2), table);
  EXPECT_EQ(measures_of(three_sets()), measures);
  std::locale::global(before);
}

TEST(QaReports, ATableThatCantBeOpenedCostsBoth) {
  const temp_folder folder;
  std::filesystem::create_directory(folder.file("rig_distance.csv"));
  run_report report = three_sets();
  EXPECT_EQ(printed_by([&] { write_qa_reports(folder.file("rig"), 2, report, 3); }),
            "Can not open distance file : " + folder.file("rig_distance.csv") + "\n\n");
  EXPECT_FALSE(std::filesystem::exists(folder.file("rig_QA_Measures.txt")));
  EXPECT_DOUBLE_EQ(report.total_dist_ratio, 1.6);
}

TEST(QaReports, PrintTheNameAsItWasGiven) {
  run_report report = three_sets();
  EXPECT_EQ(printed_by([&] { write_qa_reports(".\\no such folder\\rig", 2, report, 3); }),
            "Can not open distance file : .\\no such folder\\rig_distance.csv\n\n");
}

TEST(QaReports, MeasuresThatCantBeOpenedCostOnlyThemselves) {
  const temp_folder folder;
  std::filesystem::create_directory(folder.file("rig_QA_Measures.txt"));
  run_report report = three_sets();
  EXPECT_EQ(printed_by([&] { write_qa_reports(folder.file("rig"), 2, report, 3); }), "");
  EXPECT_GT(std::filesystem::file_size(folder.file("rig_distance.csv")), 0u);
}

TEST(QaReports, AFullDiskIsBorneInSilence) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  const temp_folder folder;
  std::filesystem::create_symlink("/dev/full", folder.file("rig_distance.csv"));
  std::filesystem::create_symlink("/dev/full", folder.file("rig_QA_Measures.txt"));
  run_report report = three_sets();
  EXPECT_EQ(printed_by([&] { write_qa_reports(folder.file("rig"), 2, report, 3); }), "");
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST(QaReports, AFullDiskUnderTheTableSparesTheMeasures) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  const temp_folder folder;
  run_report report = three_sets();
  write_qa_reports(folder.file("whole"), 2, report, 3);
  std::filesystem::create_symlink("/dev/full", folder.file("rig_distance.csv"));
  report = three_sets();
  EXPECT_EQ(printed_by([&] { write_qa_reports(folder.file("rig"), 2, report, 3); }), "");
  EXPECT_EQ(testing::read_file(folder.file("rig_QA_Measures.txt")),
            testing::read_file(folder.file("whole_QA_Measures.txt")));
}

TEST(QaReports, NamesLongerThanABufferStayWhole) {
  const temp_folder folder;
  std::string prefix = folder.path().string();
  for (int level = 0; level < 3; ++level) {
    prefix += "/" + std::string(100, 'a');
    std::filesystem::create_directory(prefix);
  }
  run_report report = three_sets();
  write_qa_reports(prefix + "/rig", 2, report, 3);
  EXPECT_TRUE(std::filesystem::exists(prefix + "/rig_distance.csv"));
  EXPECT_TRUE(std::filesystem::exists(prefix + "/rig_QA_Measures.txt"));
}

TEST(QaReports, ReplaceThoseOfAnEarlierRun) {
  const temp_folder folder;
  write_file(folder.file("rig_QA_Measures.txt"), std::string(5000, 'x'));
  run_report report = three_sets();
  write_qa_reports(folder.file("rig"), 2, report, 3);
  EXPECT_EQ(read_text(folder.file("rig_QA_Measures.txt")), measures_of(three_sets()));
}

}  // namespace
}  // namespace ocpan

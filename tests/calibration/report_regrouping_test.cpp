#include "calibration/report_regrouping.h"

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"

namespace ocpan {
namespace {

run_report three_groups() {
  run_report report;
  report.average_error = 0.25;
  report.matched_points = 99;
  report.entry_full_boards = {1, 2, 0};
  report.entry_matched_points = {10, 30, 0};
  report.entry_max_error = {0.5, 0.9, 0.0};
  report.entry_average_error = {0.1, 0.3, 0.0};
  report.entry_min_distance = {400, 300, 350};
  report.entry_max_distance = {500, 450, 360};
  report.entry_distances = {{400, 500}, {300, 450, 310}, {350}};
  report.entry_flags = {{true, false}, {true, true, false}, {false}};
  return report;
}

TEST(RegroupBySet, PrintsTheBoardsOfEachGroupFromZero) {
  run_report report = three_groups();
  EXPECT_EQ(testing::printed_by([&] {
              regroup_by_set(report, {1, 1, 1}, {{0}, {1}, {0, 1}});
            }),
            "total group : 3\n"
            "2 board to be calculated in 0 group!\n"
            "3 board to be calculated in 1 group!\n"
            "1 board to be calculated in 2 group!\n");
}

TEST(RegroupBySet, TakesASingleGroupAsItIs) {
  run_report report = three_groups();
  testing::printed_by([&] { regroup_by_set(report, {1, 1, 1}, {{0}, {1}, {0, 1}}); });
  const run_report before = three_groups();
  EXPECT_EQ(report.entry_average_error, before.entry_average_error);
  EXPECT_EQ(report.entry_distances, before.entry_distances);
  EXPECT_EQ(report.entry_flags, before.entry_flags);
  EXPECT_EQ(report.entry_cameras, (std::vector<std::vector<std::uint64_t>>{{0}, {1}, {0, 1}}));
}

TEST(RegroupBySet, MarksASetWithoutBoards) {
  run_report report = three_groups();
  testing::printed_by([&] { regroup_by_set(report, {2, 0, 1}, {{0}, {1}, {0, 1}}); });
  EXPECT_EQ(report.entry_full_boards[1], -1);
  EXPECT_EQ(report.entry_matched_points[1], -1);
  EXPECT_EQ(report.entry_max_error[1], -1.0);
  EXPECT_EQ(report.entry_average_error[1], -1.0);
  EXPECT_EQ(report.entry_min_distance[1], -1.0);
  EXPECT_EQ(report.entry_max_distance[1], -1.0);
  EXPECT_EQ(report.entry_distances[1], std::vector<double>{-1.0});
  EXPECT_EQ(report.entry_flags[1], std::vector<bool>{false});
  EXPECT_EQ(report.entry_distances[2], std::vector<double>{350});
}

TEST(RegroupBySet, MergesTheGroupsOfASet) {
  run_report report = three_groups();
  testing::printed_by([&] { regroup_by_set(report, {3}, {{0, 1}}); });
  EXPECT_EQ(report.entry_full_boards, std::vector<int>{3});
  EXPECT_EQ(report.entry_matched_points, std::vector<int>{40});
  EXPECT_EQ(report.entry_max_error, std::vector<double>{0.9});
  ASSERT_EQ(report.entry_average_error.size(), 1u);
  // A group without used points doesn't weigh in.
  EXPECT_DOUBLE_EQ(report.entry_average_error[0], (10 * 0.1 + 30 * 0.3) / 40);
  EXPECT_EQ(report.entry_min_distance, std::vector<double>{300});
  EXPECT_EQ(report.entry_max_distance, std::vector<double>{500});
  EXPECT_EQ(report.entry_distances,
            (std::vector<std::vector<double>>{{400, 500, 300, 450, 310, 350}}));
  EXPECT_EQ(report.entry_flags,
            (std::vector<std::vector<bool>>{{true, false, true, true, false, false}}));
}

TEST(RegroupBySet, OfGroupsWithoutUsedPointsHasNoError) {
  run_report report = three_groups();
  report.entry_matched_points = {0, 0, 0};
  testing::printed_by([&] { regroup_by_set(report, {2, 1}, {{0}, {1}}); });
  EXPECT_EQ(report.entry_average_error[0], 0);
}

TEST(RegroupBySet, LeavesTheTotals) {
  run_report report = three_groups();
  testing::printed_by([&] { regroup_by_set(report, {3}, {{0, 1}}); });
  EXPECT_EQ(report.average_error, 0.25);
  EXPECT_EQ(report.matched_points, 99);
}

}  // namespace
}  // namespace ocpan

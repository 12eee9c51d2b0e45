#include <cstdio>

#include <gtest/gtest.h>

#include "solver/solve_stage.h"
#include "tests/solver/synthetic_scene.h"

#ifdef __linux__
#include <sys/resource.h>
#endif

namespace ocpan {
namespace {

TEST(ManyBoards, TenThousandBeforeEightCamerasFitInAGigabyte) {
  constexpr std::size_t cameras = 8;
  constexpr std::size_t shots_of_pair = 1250;
  const rig truth = testing::side_by_side(cameras);
  std::vector<view_group> groups;
  for (std::size_t c = 0; c < cameras; ++c) {
    const std::size_t first = c == 7 ? 0 : c;
    groups.push_back(
        testing::shoot(truth, {first, first + 1}, shots_of_pair, static_cast<unsigned>(c)));
  }
  rig models = truth;
  models[3][C_0] += 2;
  models[5][H_0] *= 1.01;
  free_parameters free(cameras, {C_0, C_1, C_2, H_0});
  free[0].clear();  // its place is the rig's
  run_report report;
  solve_settings settings;
  settings.max_iterations = 5;
  solve_stage(report, models, groups, models, groups, free, free_poses(), {}, {}, settings);
  EXPECT_EQ(report.matched_points, 10'000 * 2 * 30);
  EXPECT_LT(report.average_error, 1e-3);
#ifdef __linux__
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("10,000 boards of 30 corners, two cameras each: %ld MB at most\n",
              usage.ru_maxrss / 1024);
  EXPECT_LT(usage.ru_maxrss, 1024L * 1024);
#endif
}

}  // namespace
}  // namespace ocpan

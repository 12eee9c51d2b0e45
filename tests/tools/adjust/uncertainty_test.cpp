#include "tools/adjust/uncertainty.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/tools/adjust/simulated_boards.h"

namespace ocpan {
namespace {

TEST(Uncertainty, IsNoNumberWhereACameraSeesNothing) {
  const testing::simulated_boards simulated = testing::simulate_preset("2-lens0", 0.06, 1);
  const adjusted_rig fit =
      measure_rig(simulated.truth(), simulated.details(), testing::seen_boards_of(simulated), {});
  Eigen::Matrix3Xd directions(3, 2);
  directions.col(0) = Eigen::Vector3d(-0.3, 0, -1).normalized();
  directions.col(1) = Eigen::Vector3d::UnitZ();
  const Eigen::ArrayXd deviations = seam_uncertainty(fit, 0, 1, directions);
  EXPECT_GT(deviations[0], 0);
  EXPECT_TRUE(std::isnan(deviations[1]));
}

}  // namespace
}  // namespace ocpan

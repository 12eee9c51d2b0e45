#include "tools/evaluate/residual_spread.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

TEST(SpreadOf, TellsTheMeasuresOfFiveLengths) {
  const residual_spread spread = spread_of({4, 0, 2, 1, 3});
  EXPECT_EQ(spread.count, 5u);
  EXPECT_DOUBLE_EQ(spread.mean, 2);
  EXPECT_DOUBLE_EQ(spread.rms, std::sqrt(6.0));
  EXPECT_DOUBLE_EQ(spread.median, 2);
  EXPECT_DOUBLE_EQ(spread.percentile_95, 3.8);
  EXPECT_DOUBLE_EQ(spread.maximum, 4);
}

TEST(SpreadOf, LeavesOutWhatIsNotFinite) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const residual_spread spread = spread_of({nan, 1, std::numeric_limits<double>::infinity()});
  EXPECT_EQ(spread.count, 1u);
  EXPECT_EQ(spread.maximum, 1);
}

TEST(SpreadOf, OfNothingIsZero) { EXPECT_EQ(spread_of({}).maximum, 0); }

}  // namespace
}  // namespace ocpan

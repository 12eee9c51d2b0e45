#include "calfiles/polynomial_roots.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

std::vector<double> sorted(std::vector<double> roots) {
  std::sort(roots.begin(), roots.end());
  return roots;
}

TEST(RealRoots, AreThoseOfTheFactors) {
  // (z - 1) (z + 2) (z - 3) (z + 4) = z^4 + 2 z^3 - 13 z^2 - 14 z + 24
  const std::vector<double> roots = sorted(real_roots({24, -14, -13, 2, 1}));
  ASSERT_EQ(roots.size(), 4u);
  EXPECT_NEAR(roots[0], -4, 1e-12);
  EXPECT_NEAR(roots[1], -2, 1e-12);
  EXPECT_NEAR(roots[2], 1, 1e-12);
  EXPECT_NEAR(roots[3], 3, 1e-12);
}

TEST(RealRoots, LeaveOutThoseWithAnImaginaryPart) {
  // (z - 3) (z^2 + 1)
  const std::vector<double> roots = real_roots({-3, 1, -3, 1, 0});
  ASSERT_EQ(roots.size(), 1u);
  EXPECT_NEAR(roots[0], 3, 1e-12);
}

TEST(RealRoots, TakeARootOfWhichTheImaginaryPartIsBelowABillionthOfAThousandth) {
  // z^2 + e^2 has the roots e i and -e i.
  int checks = 0;
  for (const double e : {1e-3, 1e-6, 1e-7, 1e-9, 1e-11, 1.1e-12}) {
    EXPECT_TRUE(real_roots({e * e, 0, 1, 0, 0}).empty()) << e;
    ++checks;
  }
  for (const double e : {0.9e-12, 1e-13}) {
    EXPECT_EQ(real_roots({e * e, 0, 1, 0, 0}), (std::vector<double>{0, 0})) << e;
    ++checks;
  }
  EXPECT_EQ(checks, 8);
}

TEST(RealRoots, LeaveOutLeadingCoefficientsOfZero) {
  EXPECT_EQ(real_roots({-6, 2, 0, 0, 0}), std::vector<double>{3});
  EXPECT_TRUE(real_roots({-6, 0, 0, 0, 0}).empty());
  EXPECT_TRUE(real_roots({0, 0, 0, 0, 0}).empty());
}

TEST(RealRoots, OfWhatIsntFiniteAreNone) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(real_roots({nan, 1, 0, 0, 0}).empty());
  EXPECT_TRUE(real_roots({1, infinity, 1, 0, 0}).empty());
  EXPECT_TRUE(real_roots({1, 1, 1e-320, 0, 0}).empty());  // 1 / 1e-320 isn't finite
}

}  // namespace
}  // namespace ocpan

#include "tools/calibration_check.h"

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

std::string found_in(const std::string& text, bool project_file = false) {
  const testing::temp_folder folder;
  testing::write_file(folder.file("rig"), text);
  return number_that_is_none(folder.file("rig"), project_file);
}

TEST(NumberThatIsNone, IsNamedWithItsLine) {
  EXPECT_EQ(found_in("Width:1 Height:2\nC_0:1 rho_0:nan\n"), "rho_0:nan in line 2");
  EXPECT_EQ(found_in("C_0:-inf\n"), "C_0:-inf in line 1");
  EXPECT_EQ(found_in("C_0:+Infinity\n"), "C_0:+Infinity in line 1");
  EXPECT_EQ(found_in("C_0:-NaN(ind)\n"), "C_0:-NaN(ind) in line 1");
}

TEST(NumberThatIsNone, IsNotFoundInAGoodCalibration) {
  EXPECT_EQ(found_in("Width:1 Height:2 Lens:0 Hfov:3\nC_0:1 rho_0:-2e-3 nan inf\n"), "");
}

TEST(NumberThatIsNone, IsLookedForOnlyInTheNumbersOfAProjectFile) {
  EXPECT_EQ(found_in("i w10 h10 yinf\n", true), "yinf in line 1");
  EXPECT_EQ(found_in("p w10 vnan\n", true), "vnan in line 1");
  EXPECT_EQ(found_in("i w1\ni w10 C0,nan,0,1\n", true), "C0,nan,0,1 in line 2");
  EXPECT_EQ(found_in("i w10 nnan.jpg\nv vnan\n# vnan\n", true), "");
}

TEST(NumberThatIsNone, LeavesAMissingFileToTheLibrary) {
  const testing::temp_folder folder;
  EXPECT_EQ(number_that_is_none(folder.file("missing"), false), "");
}

}  // namespace
}  // namespace ocpan

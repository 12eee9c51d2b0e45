#include <cmath>
#include <dlfcn.h>
#include <string>

#include <gtest/gtest.h>

#include "oc_pan_cal.h"

namespace {

// The largest double below a half: floor(x + 0.5) makes 1 of it, the C library 0.
constexpr double below_half = 0.49999999999999994;

using rounding = double (*)(double);

// The round() that the library exports, found as a caller without its header would.
rounding exported_round() {
  void* library = dlopen(LIBRARY_PATH, RTLD_LAZY | RTLD_NOLOAD);
  return library ? reinterpret_cast<rounding>(dlsym(library, "round")) : nullptr;
}

}  // namespace

TEST(Consumer, GetsTheVersion) {
  char version[128] = "";
  EXPECT_EQ(ocPAN_Version(version), OCPAN_SUCCESS);
  EXPECT_EQ(std::string(version), "V" OCPAN_VERSION);
}

TEST(Consumer, IsRefusedANullBufferForTheVersion) { EXPECT_EQ(ocPAN_Version(nullptr), -1); }

TEST(Consumer, KeepsTheRoundOfTheCLibrary) {
  volatile double x = below_half;
  EXPECT_EQ(::round(x), 0.0);
  EXPECT_EQ(std::round(x), 0.0);
}

TEST(ExportedRound, GoesAwayFromZeroAtHalves) {
  const rounding round_of_library = exported_round();
  ASSERT_NE(round_of_library, nullptr);
  EXPECT_EQ(round_of_library(2.5), 3.0);
  EXPECT_EQ(round_of_library(-2.5), -3.0);
}

TEST(ExportedRound, LeavesZero) {
  const rounding round_of_library = exported_round();
  ASSERT_NE(round_of_library, nullptr);
  EXPECT_EQ(round_of_library(0.0), 0.0);
  EXPECT_EQ(round_of_library(0.49), 0.0);
}

TEST(ExportedRound, AddsAHalfBeforeItCuts) {
  const rounding round_of_library = exported_round();
  ASSERT_NE(round_of_library, nullptr);
  EXPECT_EQ(round_of_library(below_half), 1.0);
}

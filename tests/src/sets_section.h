#pragma once

#include <gtest/gtest.h>

#include "tests/src/config_run.h"

namespace ocpan::testing {

// Reads sets behind one complete camera; the top section's lines come first.
inline config_run run_sets(const std::string& lines, const std::string& top = "") {
  return run_config(
      top + "camera_info:\n- width: 4, height: 3, hfov: 60, lens: 0\ncalibration_sets:\n" + lines);
}

// Reads sets and expects the reading to end with code 5.
inline void expect_malformed(const std::string& lines, const std::string& printed) {
  const config_run run = run_sets(lines);
  EXPECT_EQ(run.result, 5) << lines;
  EXPECT_EQ(run.printed, printed) << lines;
}

// Expects `line`, behind the lines `before`, to be refused as badly formed.
inline void expect_badly_formed(const std::string& before, const std::string& line) {
  expect_malformed(before + line + "\n", "Badly formed line: " + line + "\n");
}

}  // namespace ocpan::testing

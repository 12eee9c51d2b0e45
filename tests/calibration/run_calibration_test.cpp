#include "calibration/run_calibration.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "src/result_codes.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

TEST(RunCalibration, RefusesALensThatItDoesNotKnow) {
  const testing::temp_folder folder;
  for (const int lens : {-1, 3}) {
    run_report report;
    int result = 99;
    const std::string printed = testing::printed_by([&] {
      result = run_calibration(folder.file("out.cal"), {{10, 10, 60, 0}, {10, 10, 60, lens}}, {},
                               report);
    });
    EXPECT_EQ(result, code::argument_invalid);
    EXPECT_EQ(printed, "OpenCV version : 3.4.0\nLens expects 0, 1 or 2, got: '" +
                           std::to_string(lens) + "\n");
    EXPECT_FALSE(std::filesystem::exists(folder.file("out.cal")));
  }
}

}  // namespace
}  // namespace ocpan

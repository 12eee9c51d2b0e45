#include "tables/mask_transform.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "include/oc_pan_cal.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

TEST(WriteYuvMask, RefusesAPictureWithoutDataBeforeTheOutputIsOpened) {
  const testing::temp_folder folder;
  const std::string output = folder.file("mask.yuv");
  int result = 99;
  const std::string printed =
      testing::printed_by([&] { result = write_yuv_mask({}, "a.png", output.c_str()); });
  EXPECT_EQ(result, OCPAN_INPUT);
  EXPECT_EQ(printed,
            "Bad or no Image Data for file a.png (data=0, rows=0, cols=0, width=0, height=0)\n");
  EXPECT_FALSE(std::filesystem::exists(output));
}

}  // namespace
}  // namespace ocpan

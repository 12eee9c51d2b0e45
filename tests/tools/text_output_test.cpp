#include "tools/text_output.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::temp_folder;
using testing::write_file;

TEST(WriteText, ReplacesWhatTheFileHeldAndAddsNothing) {
  const temp_folder folder;
  const std::string name = folder.file("out.json");
  write_file(name, "something longer from before");
  EXPECT_TRUE(write_text(name, "{\r\n}\n", std::ios::binary));
  EXPECT_EQ(read_file(name), "{\r\n}\n");
}

TEST(WriteText, TellsWhatCouldNotBeWritten) {
  const temp_folder folder;
  const std::string name = folder.file("missing") + "\\out.json";
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(write_text(name, "{}\n"));
  const std::string shown = folder.file("missing") + "/out.json";
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "oc_pan: " + shown + " couldn't be written; free space on its disk\n");
  EXPECT_FALSE(std::filesystem::exists(folder.file("missing")));
}

TEST(WriteText, SeesAFullDisk) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "this system has no /dev/full";
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(write_text("/dev/full", "{}\n"));
  EXPECT_NE(::testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

}  // namespace
}  // namespace ocpan

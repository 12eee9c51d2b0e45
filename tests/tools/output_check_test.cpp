#include "tools/output_check.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::temp_folder;
using testing::write_file;

TEST(WhyNotWritable, IsEmptyForANewFileAndLeavesNone) {
  const temp_folder folder;
  EXPECT_EQ(why_not_writable(folder.file("new.cal")), "");
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(WhyNotWritable, LeavesAFileAsItWas) {
  const temp_folder folder;
  write_file(folder.file("old.cal"), "content");
  const auto before = std::filesystem::last_write_time(folder.file("old.cal"));
  EXPECT_EQ(why_not_writable(folder.file("old.cal")), "");
  EXPECT_EQ(read_file(folder.file("old.cal")), "content");
  EXPECT_EQ(std::filesystem::last_write_time(folder.file("old.cal")), before);
}

TEST(WhyNotWritable, TakesABackslashAsASeparator) {
  const temp_folder folder;
  EXPECT_EQ(why_not_writable(folder.path().string() + "\\new.cal"), "");
  EXPECT_NE(why_not_writable(folder.path().string() + "\\missing\\new.cal"), "");
}

TEST(WhyNotWritable, NamesAMissingFolder) {
  const temp_folder folder;
  const std::string reason = why_not_writable(folder.file("missing/new.cal"));
  EXPECT_EQ(reason.find("the folder " + folder.file("missing") + " isn't there; make it"), 0u)
      << reason;
}

TEST(WhyNotWritable, RefusesAFileInPlaceOfTheFolder) {
  const temp_folder folder;
  write_file(folder.file("file"), "");
  EXPECT_NE(why_not_writable(folder.file("file/new.cal")), "");
}

TEST(WhyNotWritable, RefusesAFolderInPlaceOfTheFile) {
  const temp_folder folder;
  std::filesystem::create_directory(folder.file("out"));
  EXPECT_EQ(why_not_writable(folder.file("out")), folder.file("out") + " is a folder; name a file");
  EXPECT_NE(why_not_writable(folder.file("out/")), "");
}

TEST(WhyNotWritable, GivesTheSystemsReason) {
  // Nobody can make a file there, not even the system's owner.
  if (!std::filesystem::is_directory("/proc")) GTEST_SKIP() << "no /proc";
  const std::string reason = why_not_writable("/proc/new.cal");
  EXPECT_EQ(reason.find("/proc/new.cal can't be written ("), 0u) << reason;
}

TEST(WhyNotWritable, LeavesALinkToNothingAsItIs) {
  const temp_folder folder;
  std::filesystem::create_symlink("later.cal", folder.file("link"));
  EXPECT_EQ(why_not_writable(folder.file("link")), "");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
  EXPECT_FALSE(std::filesystem::exists(folder.file("later.cal")));
}

TEST(WhyNotWritable, LeavesDevicesAlone) { EXPECT_EQ(why_not_writable("/dev/full"), ""); }

}  // namespace
}  // namespace ocpan

#include "platform/file_kind.h"

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::temp_folder;
using testing::write_file;

TEST(KindOfFile, KnowsAFileAndAFolder) {
  const temp_folder folder;
  write_file(folder.file("a.txt"), "");
  EXPECT_EQ(kind_of_file(folder.file("a.txt")), file_kind::regular);
  EXPECT_EQ(kind_of_file(folder.path().string()), file_kind::folder);
}

TEST(KindOfFile, IsOtherForWhatIsNotThere) {
  const temp_folder folder;
  EXPECT_EQ(kind_of_file(folder.file("absent")), file_kind::other);
  EXPECT_EQ(kind_of_file(""), file_kind::other);
}

#ifndef _WIN32
TEST(KindOfFile, IsOtherForADevice) { EXPECT_EQ(kind_of_file("/dev/null"), file_kind::other); }

TEST(KindOfFile, IsThatOfWhatALinkLeadsTo) {
  const temp_folder folder;
  write_file(folder.file("a.txt"), "");
  std::filesystem::create_symlink(folder.file("a.txt"), folder.file("link"));
  EXPECT_EQ(kind_of_file(folder.file("link")), file_kind::regular);
}

TEST(RemoveRegularFile, RemovesWhatALinkLeadsTo) {
  const temp_folder folder;
  write_file(folder.file("a.txt"), "");
  std::filesystem::create_symlink("a.txt", folder.file("link"));
  remove_regular_file(folder.file("link"));
  EXPECT_FALSE(std::filesystem::exists(folder.file("a.txt")));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
}
#endif

TEST(RemoveRegularFile, LeavesWhatIsNone) {
  const temp_folder folder;
  std::filesystem::create_directory(folder.file("empty"));
  remove_regular_file(folder.file("empty"));
  EXPECT_TRUE(std::filesystem::exists(folder.file("empty")));
  remove_regular_file(folder.file("absent"));
  EXPECT_FALSE(std::filesystem::exists(folder.file("absent")));
}

TEST(RemoveRegularFile, RemovesAFile) {
  const temp_folder folder;
  write_file(folder.file("a.txt"), "");
  remove_regular_file(folder.file("a.txt"));
  EXPECT_FALSE(std::filesystem::exists(folder.file("a.txt")));
}

}  // namespace
}  // namespace ocpan

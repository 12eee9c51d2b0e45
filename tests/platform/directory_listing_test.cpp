#include "platform/directory_listing.h"

#include <algorithm>
#include <cerrno>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::temp_folder;
using testing::working_folder;
using testing::write_file;

std::vector<std::string> sorted_listing(const std::string& folder) {
  std::vector<std::string> names;
  int error_number = 0;
  EXPECT_TRUE(read_directory(names, error_number, folder));
  std::sort(names.begin(), names.end());
  return names;
}

TEST(ReadDirectory, GivesFilesSubfoldersAndTheTwoDots) {
  const temp_folder folder;
  write_file(folder.file("b.png"), "");
  write_file(folder.file("a.png"), "x");
  std::filesystem::create_directory(folder.path() / "inner");
  const std::vector<std::string> expected = {".", "..", "a.png", "b.png", "inner"};
  EXPECT_EQ(sorted_listing(folder.path().string() + "/"), expected);
}

TEST(ReadDirectory, TakesBackslashes) {
  const working_folder folder;
  std::filesystem::create_directories("one/two");
  write_file("one/two/a.png", "");
  const std::vector<std::string> expected = {".", "..", "a.png"};
  EXPECT_EQ(sorted_listing("one\\two\\"), expected);
}

TEST(ReadDirectory, ReadsTheWorkingFolderWhenEmpty) {
  const working_folder folder;
  write_file("a.png", "");
  const std::vector<std::string> expected = {".", "..", "a.png"};
  EXPECT_EQ(sorted_listing(""), expected);
}

TEST(ReadDirectory, AppendsToWhatIsThere) {
  const temp_folder folder;
  std::vector<std::string> names = {"before"};
  int error_number = 0;
  ASSERT_TRUE(read_directory(names, error_number, folder.path().string() + "/"));
  ASSERT_EQ(names.size(), 3u);
  EXPECT_EQ(names.front(), "before");
}

#ifndef _WIN32
TEST(ReadDirectory, GivesTheErrorNumberOfAMissingFolder) {
  const temp_folder folder;
  std::vector<std::string> names;
  int error_number = 0;
  EXPECT_FALSE(read_directory(names, error_number, folder.file("absent") + "/"));
  EXPECT_EQ(error_number, ENOENT);
  EXPECT_TRUE(names.empty());
}

TEST(ReadDirectory, GivesTheErrorNumberOfAFile) {
  const temp_folder folder;
  write_file(folder.file("a.png"), "");
  std::vector<std::string> names;
  int error_number = 0;
  EXPECT_FALSE(read_directory(names, error_number, folder.file("a.png") + "\\"));
  EXPECT_EQ(error_number, ENOTDIR);
}
#endif

}  // namespace
}  // namespace ocpan

#include <algorithm>
#include <cerrno>

#include <gtest/gtest.h>

#include "tests/src/sets_section.h"

namespace ocpan {
namespace {

using testing::config_run;
using testing::expect_badly_formed;
using testing::expect_malformed;
using testing::files_of;
using testing::opening_error;
using testing::run_sets;
using testing::working_folder;
using testing::write_file;
using strings = std::vector<std::string>;

// A working folder with pictures under left and right.
class PictureFolders : public ::testing::Test {
 protected:
  PictureFolders() {
    std::filesystem::create_directories("rig/left");
    std::filesystem::create_directories("rig/right");
    for (const char* name : {"b1.png", "a2.png", "A1.png", "a1.bak"}) {
      write_file(std::filesystem::path("rig/left") / name, "");
    }
    for (const char* name :
         {"xD1.png", "xB1.png", "xA1.png", "xa2.png", "xc2.png", "xb2.png", "xC1.png"}) {
      write_file(std::filesystem::path("rig/left") / name, "");
    }
    for (const char* name : {"a7.png", "a3.png", "xd1.png"}) {
      write_file(std::filesystem::path("rig/right") / name, "");
    }
    write_file("rig/xc1.png", "");
    write_file("rig/c2.png", "");
    write_file("rig/c1.png", "");
  }

  working_folder folder_;
};

const std::string two = "- cameras: [1, 2]\n";

TEST_F(PictureFolders, ArePairedByPositionInSortedListings) {
  const config_run run = run_sets(
      two + "  subdir: ['left', 'right']\n  filename_patterns: ['a\\d\\.png$', '^a[0-9]\\.png$']\n",
      "base_directory: 'rig'\n");
  const auto& cameras = run.sets.at(0).cameras;
  EXPECT_EQ(files_of(cameras.at(0)), strings{"rig\\left\\a2.png"});
  EXPECT_EQ(files_of(cameras.at(1)), (strings{"rig\\right\\a3.png", "rig\\right\\a7.png"}));
}

TEST_F(PictureFolders, AreSortedWithoutRegardToCase) {
  const config_run run =
      run_sets("- cameras: [1]\n  subdir: 'left'\n  filename_patterns: 'x.\\d\\.png$'\n",
               "base_directory: 'rig'\n");
  EXPECT_EQ(files_of(run.sets.at(0).cameras.at(0)),
            (strings{"rig\\left\\xA1.png", "rig\\left\\xa2.png", "rig\\left\\xB1.png",
                     "rig\\left\\xb2.png", "rig\\left\\xC1.png", "rig\\left\\xc2.png",
                     "rig\\left\\xD1.png"}));
}

TEST_F(PictureFolders, ServeAllCamerasWithOneSubdirectory) {
  const config_run run =
      run_sets(two + "  subdir: ['left']\n  filename_patterns: ['A1\\.png$', 'b1\\.png$']\n",
               "base_directory: 'rig'\n");
  EXPECT_EQ(files_of(run.sets.at(0).cameras.at(0)), strings{"rig\\left\\A1.png"});
  EXPECT_EQ(files_of(run.sets.at(0).cameras.at(1)), strings{"rig\\left\\b1.png"});
}

TEST_F(PictureFolders, AreTheBaseDirectoryWithoutSubdir) {
  const config_run run =
      run_sets("- cameras: [1]\n  filename_patterns: ['c\\d\\.png$']\n", "base_directory: 'rig'\n");
  EXPECT_EQ(files_of(run.sets.at(0).cameras.at(0)), (strings{"rig\\c1.png", "rig\\c2.png"}));
}

TEST_F(PictureFolders, CountFromTheWorkingFolderWithoutBaseDirectory) {
  const config_run run =
      run_sets("- cameras: [1]\n  subdir: 'rig/right'\n  filename_patterns: 'a\\d\\.png$'\n");
  EXPECT_EQ(files_of(run.sets.at(0).cameras.at(0)),
            (strings{"rig\\right\\a3.png", "rig\\right\\a7.png"}));
}

TEST_F(PictureFolders, MatchNothingWithoutBaseDirectoryAndSubdir) {
  const config_run run = run_sets("- cameras: [1]\n  filename_patterns: ['rig$']\n");
  EXPECT_TRUE(run.sets.at(0).cameras.at(0).files.empty());
}

TEST_F(PictureFolders, AreTheWorkingFolderWithAnEmptyBaseDirectory) {
  const config_run run =
      run_sets("- cameras: [1]\n  filename_patterns: ['rig$']\n", "base_directory: ''\n");
  EXPECT_EQ(files_of(run.sets.at(0).cameras.at(0)), strings{"rig"});
}

TEST_F(PictureFolders, StandForThemselvesBehindABackslash) {
  const std::filesystem::path here = std::filesystem::current_path().relative_path();
  const std::string full = (std::filesystem::path("/") / here / "rig/right").generic_string();
  const config_run run =
      run_sets("- cameras: [1]\n  subdir: '" + full + "'\n  filename_patterns: 'a3\\.png$'\n",
               "base_directory: 'rig'\n");
  std::string expected = full + "/a3.png";
  std::replace(expected.begin(), expected.end(), '/', '\\');
  EXPECT_EQ(files_of(run.sets.at(0).cameras.at(0)), strings{expected});
}

TEST_F(PictureFolders, OfASecondBaseDirectoryAddToTheListingOfTheFirst) {
  const config_run both = run_sets("- cameras: [1]\n  filename_patterns: ['x.\\d\\.png$']\n",
                                   "base_directory: 'rig/right'\nbase_directory: 'rig'\n");
  EXPECT_EQ(files_of(both.sets.at(0).cameras.at(0)), (strings{"rig\\xc1.png", "rig\\xd1.png"}));
}

TEST_F(PictureFolders, OfASecondSubdirAreAppended) {
  const config_run run = run_sets(
      two +
          "  subdir: 'left'\n  subdir: 'right'\n  filename_patterns: ['b1\\.png$', 'a3\\.png$']\n",
      "base_directory: 'rig'\n");
  EXPECT_EQ(files_of(run.sets.at(0).cameras.at(1)), strings{"rig\\right\\a3.png"});
}

TEST_F(PictureFolders, OfTheSetBeforeAreForgotten) {
  const std::string rest = "  board_shape: [3, 3], board_scale: 1, set_name: 'a'\n";
  const config_run run =
      run_sets("- cameras: [1]\n  subdir: 'left'\n  filename_patterns: 'b1\\.png$'\n" + rest +
                   "- cameras: [1]\n  filename_patterns: 'c1\\.png$'\n" + rest +
                   "- cameras: [1]\n  subdir: 'right'\n  filename_patterns: 'a3\\.png$'\n" + rest,
               "base_directory: 'rig'\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(files_of(run.sets.at(1).cameras.at(0)), strings{"rig\\c1.png"});
  EXPECT_EQ(files_of(run.sets.at(2).cameras.at(0)), strings{"rig\\right\\a3.png"});
}

TEST_F(PictureFolders, ReportAMissingSubdirectory) {
  const config_run run = run_sets("- cameras: [1]\n  subdir: 'none'\n  filename_patterns: 'a'\n",
                                  "base_directory: 'rig'\n");
  EXPECT_EQ(run.result, 5);
  EXPECT_EQ(run.printed, opening_error(ENOENT, "rig\\none\\*"));
}

TEST_F(PictureFolders, HandOnTheResultOfThePattern) {
  const config_run unexpected =
      run_sets("- cameras: [1]\n  subdir: 'rig/right'\n  filename_patterns: 'a3'\n");
  EXPECT_EQ(unexpected.result, -1);
  EXPECT_EQ(unexpected.printed, "Unexpected non match case\n");
  const config_run refused =
      run_sets("- cameras: [1]\n  subdir: 'rig/right'\n  filename_patterns: '(a3'\n");
  EXPECT_EQ(refused.result, 5);
  EXPECT_EQ(refused.printed, "Pattern '(' not supported.\n  Pattern: (a3\n");
}

TEST_F(PictureFolders, RefuseASecondListOfPatterns) {
  const config_run run = run_sets(
      "- cameras: [1]\n  subdir: 'rig/right'\n  filename_patterns: 'a3\\.png$'\n"
      "  filename_patterns: 'a7\\.png$'\n");
  EXPECT_EQ(run.result, -1);
  EXPECT_EQ(run.printed, "Internal error, file_names should be empty here.\n");
}

TEST(FilenamePatterns, NeedTheCamerasAheadOfThem) {
  const std::string line = "- filename_patterns: ['a']";
  expect_malformed(line + "\n  cameras: [1]\n",
                   "Found more patterns than cameras in line: " + line + "\n");
}

TEST(FilenamePatterns, MayNotBeMoreThanCameras) {
  expect_malformed("- cameras: [1,2]\n  filename_patterns: ['a', 'b']\n",
                   "Found more patterns than cameras in line:   filename_patterns: ['a', 'b']\n");
}

TEST(FilenamePatterns, MayNotBeFewerThanCameras) {
  expect_malformed("- cameras: [1, 2, 3]\n  filename_patterns: ['a', 'b']\n",
                   "Found inconsistent patterns (2) and cameras (3) in line:   filename_patterns: "
                   "['a', 'b']\n");
  expect_malformed("- cameras: [1]\n  filename_patterns: '\n",
                   "Found inconsistent patterns (0) and cameras (1) in line:   filename_patterns: "
                   "'\n");
}

TEST(FilenamePatterns, NeedAQuote) {
  expect_badly_formed(two, "  filename_patterns: [a, b]");
  expect_badly_formed(two, "  filename_patterns: ");
}

TEST(Subdirectories, NeedAQuote) {
  expect_badly_formed(two, "  subdir: left");
  expect_badly_formed(two, "  subdir: ");
  expect_badly_formed(two, "  subdir:,board_scale: 1");
}

TEST(Subdirectories, MayNotBeMoreThanCameras) {
  expect_malformed(
      "- cameras: [1, 2]\n  subdir: ['a', 'b', 'c']\n  filename_patterns: ['a', 'b']\n",
      "Found more subdirectories (3) than cameras (2)\n");
}

TEST(Subdirectories, MayBeFewerThanCamerasOnlyIfThereIsOne) {
  expect_malformed("- cameras: [1, 2, 3]\n  subdir: ['a', 'b']\n  filename_patterns: ['a', 'b']\n",
                   "Found less subdirectories (2) than cameras (3)\n");
  expect_malformed("- cameras: [1]\n  subdir: '\n  filename_patterns: ['a']\n",
                   "Found less subdirectories (0) than cameras (1)\n");
}

TEST(QuotedLists, ExpectThreeCharactersBetweenEntries) {
  // The second entry is read from its second character, up to the next quote.
  expect_malformed("- cameras: [1, 2]\n  subdir: ['ab','cd']\n  filename_patterns: ['x', 'y']\n",
                   opening_error(ENOENT, "ab\\*"));
  const working_folder folder;
  std::filesystem::create_directory("ab");
  expect_malformed("- cameras: [1, 2]\n  subdir: ['ab','cd']\n  filename_patterns: ['x', 'y']\n",
                   opening_error(ENOENT, "d\\*"));
}

TEST(QuotedLists, HoldNoEmptyEntry) {
  // The closing quote is looked for from the entry's second character on.
  const working_folder folder;
  expect_malformed("- cameras: [1]\n  subdir: ['', 'b']\n  filename_patterns: ['x']\n",
                   opening_error(ENOENT, "', \\*"));
}

TEST(QuotedLists, TakeTheEndOfTheValueForAMissingQuote) {
  const working_folder folder;
  expect_malformed("- cameras: [1]\n  subdir: ['abc]\n  filename_patterns: ['x']\n",
                   opening_error(ENOENT, "abc]\\*"));
}

TEST(QuotedLists, GoOnWhileTheValueDoes) {
  // Four characters behind the last quote more text begins: one more entry.
  expect_malformed("- cameras: [1]\n  filename_patterns: ['a'] # note\n",
                   "Found more patterns than cameras in line:   filename_patterns: ['a'] # note\n");
}

}  // namespace
}  // namespace ocpan

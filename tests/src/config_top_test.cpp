#include <cerrno>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/src/config_run.h"

namespace ocpan {
namespace {

using testing::config_run;
using testing::opening_error;
using testing::run_config;
using testing::run_config_file;
using testing::temp_folder;
using testing::working_folder;
using testing::write_file;

const std::string no_cameras = "Invalid number of camera details supplied: 0, should be in  1..8\n";

// Reads a configuration of this text and expects a failure in its top section.
void expect_malformed(const std::string& text, const std::string& printed) {
  const config_run run = run_config(text);
  EXPECT_EQ(run.result, 5) << text;
  EXPECT_EQ(run.printed, printed) << text;
}

TEST(ReadConfigFile, ReportsAFileThatCannotBeOpened) {
  const temp_folder folder;
  const std::string path = folder.file("absent.txt");
  const config_run run = run_config_file(path);
  EXPECT_EQ(run.result, 3);
  EXPECT_EQ(run.printed, "Couldn't open: " + path + "\n");
  EXPECT_TRUE(run.cameras.empty());
}

TEST(ReadConfigFile, ReportsAFolderAsAFileThatCannotBeOpened) {
  const temp_folder folder;
  const config_run run = run_config_file(folder.path().string());
  EXPECT_EQ(run.result, 3);
  EXPECT_EQ(run.printed, "Couldn't open: " + folder.path().string() + "\n");
}

#ifdef __linux__
TEST(ReadConfigFile, ReportsAFileThatCannotBeRead) {
  // Opens, but nothing is mapped at its start: the first read fails.
  const config_run run = run_config_file("/proc/self/mem");
  EXPECT_EQ(run.result, 3);
  EXPECT_EQ(run.printed, "Couldn't read: /proc/self/mem\n");
}
#endif

TEST(ReadConfigFile, TakesAPathWithBackslashesAndPrintsItAsGiven) {
  const working_folder folder;
  std::filesystem::create_directory("inner");
  write_file("inner/rig.txt", "odd: 1\n");
  EXPECT_EQ(run_config_file("inner\\rig.txt").printed, "Unrecognised id: odd\n");
  EXPECT_EQ(run_config_file("inner\\absent.txt").printed, "Couldn't open: inner\\absent.txt\n");
}

TEST(TopSection, AloneLeavesNoCamera) {
  expect_malformed("output_filename: 'a.cal'\n", no_cameras);
  expect_malformed("", no_cameras);
}

TEST(TopSection, SkipsBlankLinesAndLinesWithoutColon) {
  expect_malformed("\n   \n- text\n\r\n'quotes'\n", no_cameras);
}

TEST(TopSection, TakesTheOutputFileWithBackslashes) {
  EXPECT_EQ(run_config("output_filename: 'out/a\\b/rig.cal'\n").output_file, "out\\a\\b\\rig.cal");
}

TEST(TopSection, TakesAValueWithoutOrWithMoreBlanks) {
  EXPECT_EQ(run_config("output_filename:'a'\n").output_file, "a");
  EXPECT_EQ(run_config("output_filename:    'a'  \n").output_file, "a");
}

TEST(TopSection, TakesTheFirstQuotedTextOnly) {
  EXPECT_EQ(run_config("output_filename: 'a' 'b'\n").output_file, "a");
  EXPECT_EQ(run_config("output_filename: ''\n").output_file, "");
}

TEST(TopSection, TakesALineEndOfTwoCharacters) {
  EXPECT_EQ(run_config("output_filename: 'a'\r\n").output_file, "a");
}

TEST(TopSection, TakesTheLastOutputFile) {
  EXPECT_EQ(run_config("output_filename: 'a'\noutput_filename: 'b'\n").output_file, "b");
}

TEST(TopSection, TakesAColonWithinAValue) {
  // The search for a further key goes on two characters ahead of the value's end.
  EXPECT_EQ(run_config("output_filename: 'C:/out/a.cal'\n").output_file, "C:\\out\\a.cal");
}

TEST(TopSection, RefusesAColonInTheLastTwoCharactersOfAValue) {
  // Goes on at index 15 + 1 + 3 = 19, the "b"; the ":" found from there is at 20, and as
  // many characters are shown.
  expect_malformed("output_filename: 'ab:'\n", "Unrecognised id: b:'\n");
}

TEST(TopSection, ReportsAValueWithoutQuotes) {
  expect_malformed("output_filename: a.cal\n", "Badly formed line:  a.cal\n");
  expect_malformed("output_filename: 'a.cal\n", "Badly formed line:  'a.cal\n");
  expect_malformed("output_filename:\n", "Badly formed line: \n");
  expect_malformed("base_directory: pics\n", "Badly formed line:  pics\n");
  expect_malformed("base_directory:\n", "Badly formed line: \n");
}

TEST(TopSection, ReportsAnUnknownKey) {
  expect_malformed("odd: 'a'\n", "Unrecognised id: odd\n");
  expect_malformed("output_filename : 'a'\n", "Unrecognised id: output_filename \n");
  expect_malformed("Camera_info:\n", "Unrecognised id: Camera_info\n");
  expect_malformed(":\n", "Unrecognised id: \n");
  expect_malformed("my_output_filename: 'a'\n", "Unrecognised id: my_output_filename\n");
}

TEST(TopSection, ReportsAKeyBehindABlank) {
  expect_malformed(" camera_info:\n", "Unrecognised id:  camera_info\n");
}

TEST(TopSection, ReportsASecondKeyOfALineWithAsManyCharactersAsItsColonStandsIn) {
  // Goes on at 15 + 1 + 1 = 17, the opening quote; the ":" is at index 36.
  const std::string line = "output_filename: 'a', base_directory: 'and more text than that'";
  ASSERT_EQ(line.find(':', 17), 36u);
  expect_malformed(line + "\n", "Unrecognised id: " + line.substr(17, 36) + "\n");
}

TEST(TopSection, IgnoresTheRestOfTheCameraInfoLine) {
  expect_malformed("camera_info: - odd: 'x': :\n", no_cameras);
  expect_malformed("camera_info:\n", no_cameras);
}

TEST(TopSection, DoesNotComeBack) {
  EXPECT_EQ(run_config("camera_info:\noutput_filename: 'a'\n").printed,
            "Unrecognised camera_info: output_filename\n");
  EXPECT_EQ(run_config("camera_info:\ncalibration_sets:\noutput_filename: 'a'\n").printed,
            "Unrecognised calibration_sets: output_filename\n");
}

TEST(BaseDirectory, IsListedAtOnce) {
  const working_folder folder;
  expect_malformed("base_directory: 'no/such'\nodd: 1\n", opening_error(ENOENT, "no\\such\\*"));
}

TEST(BaseDirectory, ReportsAFileAsAFolderThatCannotBeOpened) {
  const working_folder folder;
  write_file("pics", "");
  expect_malformed("base_directory: 'pics'\n", opening_error(ENOTDIR, "pics\\*"));
}

#ifdef __linux__
TEST(BaseDirectory, ReportsAFolderWithoutAnyEntry) {
  const working_folder folder;
  std::filesystem::create_directory("gone");
  std::filesystem::current_path("gone");
  std::filesystem::remove(folder.path() / "gone");
  expect_malformed("base_directory: ''\n", "No files found in: \n");
}
#endif

TEST(ConfigCounts, RefuseMoreThanEightCameras) {
  std::string text = "camera_info:\n";
  for (int i = 0; i < 9; ++i) text += "- width: 1, height: 1, hfov: 1, lens: 0\n";
  expect_malformed(text, "Invalid number of camera details supplied: 9, should be in  1..8\n");
}

TEST(ConfigCounts, RefuseTooFewSets) {
  std::string text = "camera_info:\n";
  for (int i = 0; i < 8; ++i) text += "- width: 1, height: 1, hfov: 1, lens: 0\n";
  expect_malformed(text,
                   "Invalid number of calibration sets supplied: 0, should be at least 2*num "
                   "cameras-1, ideally more\n");
}

}  // namespace
}  // namespace ocpan

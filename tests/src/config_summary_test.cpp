#include "src/config_summary.h"

#include <gtest/gtest.h>

#include "tests/src/config_run.h"
#include "tests/support/captured_output.h"

namespace ocpan {
namespace {

using testing::config_run;
using testing::printed_by;
using testing::run_config;
using testing::working_folder;
using testing::write_file;

const std::string two_cameras =
    "base_directory: 'pics/rig1'\n"
    "output_filename: 'out/rig1.cal'\n"
    "camera_info:\n"
    "  - width: 1920, height: 1080, hfov: 190.25, lens: 1\n"
    "  - width: 640, height: 480, hfov: 62, lens: 0\n"
    "calibration_sets:\n";

std::string set_of_first(const std::string& name) {
  return "  - set_name: '" + name +
         "', board_scale: 25.0\n"
         "    cameras: [1]\n"
         "    filename_patterns: ['^left\\d\\.png$']\n"
         "    board_shape: [9, 6]\n";
}

class ConfigSummary : public ::testing::Test {
 protected:
  ConfigSummary() {
    std::filesystem::create_directories("pics/rig1/deep");
    for (const char* name : {"left1.png", "left2.png", "deep/right1.png"}) {
      write_file(std::filesystem::path("pics/rig1") / name, "");
    }
  }

  working_folder folder_;
};

TEST_F(ConfigSummary, ShowsAllThatWasRead) {
  const config_run run = run_config(two_cameras + set_of_first("wall") +
                                    "  - set_name: 'both', board_scale: 12.5\n"
                                    "    cameras: [1, 2]\n"
                                    "    subdir: ['.', 'deep']\n"
                                    "    filename_patterns: ['left2\\.png$', 'right\\d\\.png$']\n"
                                    "    board_shape: [7, 5]\n" +
                                    set_of_first("floor"));
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.output_file, "out\\rig1.cal");
  EXPECT_EQ(run.printed,
            "Starting calibration with the following parameters...\n"
            " Output file: out\\rig1.cal\n"
            " Camera parameters (2):\n"
            "   0 - width: 1920, height: 1080, hfov: 190.25, lens: 1\n"
            "   1 - width: 640, height: 480, hfov: 62, lens: 0\n"
            " Calibration sets (3):\n"
            "   0\n"
            "    - set_prefix: wall\n"
            "    - board shape: 9, 6\n"
            "    - board scale: 25\n"
            "    - save frames: true\n"
            "    - cameras (1):\n"
            "     + id: 1\n"
            "     + file_type: 0\n"
            "     + files (2):\n"
            "       - pics\\rig1\\left1.png\n"
            "       - pics\\rig1\\left2.png\n"
            "   1\n"
            "    - set_prefix: both\n"
            "    - board shape: 7, 5\n"
            "    - board scale: 12.5\n"
            "    - save frames: true\n"
            "    - cameras (2):\n"
            "     + id: 1\n"
            "     + file_type: 0\n"
            "     + files (1):\n"
            "       - pics\\rig1\\.\\left2.png\n"
            "     + id: 2\n"
            "     + file_type: 0\n"
            "     + files (1):\n"
            "       - pics\\rig1\\deep\\right1.png\n"
            "   2\n"
            "    - set_prefix: floor\n"
            "    - board shape: 9, 6\n"
            "    - board scale: 25\n"
            "    - save frames: true\n"
            "    - cameras (1):\n"
            "     + id: 1\n"
            "     + file_type: 0\n"
            "     + files (2):\n"
            "       - pics\\rig1\\left1.png\n"
            "       - pics\\rig1\\left2.png\n"
            "\n");
}

TEST_F(ConfigSummary, PassesOverSetsWhoseFirstCameraHasNoFilesButCountsThem) {
  const config_run run = run_config(two_cameras +
                                    "  - set_name: 'none', board_scale: 1\n"
                                    "    cameras: [2, 1]\n"
                                    "    filename_patterns: ['right\\d\\.png$', 'left\\d\\.png$']\n"
                                    "    board_shape: [9, 6]\n"
                                    "  - set_name: 'no cameras', board_scale: 1\n"
                                    "    cameras: []\n"
                                    "    filename_patterns: '\n"
                                    "    board_shape: [9, 6]\n" +
                                    set_of_first("wall"));
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.sets.size(), 3u);
  const std::string head = " Calibration sets (3):\n   2\n    - set_prefix: wall\n";
  EXPECT_NE(run.printed.find(head), std::string::npos) << run.printed;
}

TEST_F(ConfigSummary, EndsAtALaterCameraWithoutFiles) {
  const config_run run = run_config(two_cameras +
                                    "  - set_name: 'both', board_scale: 1\n"
                                    "    cameras: [1, 2]\n"
                                    "    filename_patterns: ['left1\\.png$', 'right\\d\\.png$']\n"
                                    "    board_shape: [9, 6]\n" +
                                    set_of_first("wall") + set_of_first("floor"));
  EXPECT_EQ(run.result, 5);
  const std::string tail =
      "     + files (1):\n"
      "       - pics\\rig1\\left1.png\n"
      "     + id: 2\n"
      "     + file_type: 0\n"
      "     + files (0):\n"
      "\n"
      "Error: zero files in set not allowed\n";
  ASSERT_GE(run.printed.size(), tail.size());
  EXPECT_EQ(run.printed.substr(run.printed.size() - tail.size()), tail);
  EXPECT_EQ(run.sets.size(), 3u);
}

TEST_F(ConfigSummary, NeedsTwiceTheCamerasLessOneSets) {
  const config_run few = run_config(two_cameras + set_of_first("a") + set_of_first("b"));
  EXPECT_EQ(few.result, 5);
  EXPECT_EQ(few.printed,
            "Invalid number of calibration sets supplied: 2, should be at least 2*num cameras-1, "
            "ideally more\n");
  EXPECT_EQ(few.sets.size(), 2u);
}

TEST_F(ConfigSummary, PassesWithThreeCamerasAndFiveSetsButNotFour) {
  const std::string cameras =
      "base_directory: 'pics/rig1'\ncamera_info:\n"
      "- width: 1, height: 1, hfov: 1, lens: 0\n"
      "- width: 1, height: 1, hfov: 1, lens: 0\n"
      "- width: 1, height: 1, hfov: 1, lens: 0\ncalibration_sets:\n";
  std::string sets;
  for (int i = 0; i < 4; ++i) sets += set_of_first("a");
  EXPECT_EQ(run_config(cameras + sets).result, 5);
  EXPECT_EQ(run_config(cameras + sets + set_of_first("a")).result, 0);
}

TEST_F(ConfigSummary, ReadsLineEndsOfTwoCharacters) {
  std::string text = two_cameras + set_of_first("a") + set_of_first("b") + set_of_first("c");
  const config_run plain = run_config(text);
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
    text.replace(at, 1, "\r\n");
  }
  const config_run carried = run_config(text);
  EXPECT_EQ(carried.result, 0);
  EXPECT_EQ(carried.printed, plain.printed);
}

TEST(PrintConfigSummary, ShowsFramesThatAreNotSaved) {
  set_config set;
  set.set_prefix = "a";
  set.save_frames = false;
  set.cameras.push_back({5, {"x"}, 8});
  const std::string printed =
      printed_by([&] { EXPECT_EQ(print_config_summary("", {}, {set}), 0); });
  EXPECT_EQ(printed,
            "Starting calibration with the following parameters...\n"
            " Output file: \n"
            " Camera parameters (0):\n"
            " Calibration sets (1):\n"
            "   0\n"
            "    - set_prefix: a\n"
            "    - board shape: -1, -1\n"
            "    - board scale: -1\n"
            "    - save frames: false\n"
            "    - cameras (1):\n"
            "     + id: 5\n"
            "     + file_type: 8\n"
            "     + files (1):\n"
            "       - x\n"
            "\n");
}

}  // namespace
}  // namespace ocpan

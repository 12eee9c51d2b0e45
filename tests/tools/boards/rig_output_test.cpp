#include "tools/boards/rig_output.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::working_folder;
using testing::write_file;

class RigOutput : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory("in");
    std::filesystem::create_directory("out");
    for (const char* picture : {"in/a1.png", "in/a2.png", "in/b1.png"}) write_file(picture, "p");
    write_file("rig.cal", "calibration");
    write_file(
        "rig.txt",
        "base_directory: 'in'\noutput_filename: 'out/found.cal'\ncamera_info:\n"
        "  - width: 160, height: 120, hfov: 60, lens: 0\n"
        "  - width: 160, height: 120, hfov: 60, lens: 0\n"
        "calibration_sets:\n"
        "  - set_name: 'one', board_scale: 25.0\n    cameras: [1]\n"
        "    filename_patterns: ['^a\\d\\.png$']\n    board_shape: [4, 3]\n"
        "  - set_name: 'two', board_scale: 25.0\n    cameras: [2]\n"
        "    filename_patterns: ['^b\\d\\.png$']\n    board_shape: [4, 3]\n"
        "  - set_name: 'both', board_scale: 25.0\n    cameras: [1, 2]\n"
        "    filename_patterns: ['^a\\d\\.png$', '^b\\d\\.png$']\n    board_shape: [4, 3]\n");
  }

  static std::string why_not(const std::string& output) {
    return why_not_rig_output(output, "rig.cal", "rig.txt");
  }

  working_folder folder_;
};

TEST_F(RigOutput, MayBeANewFile) { EXPECT_EQ(why_not("out/refined.cal"), ""); }

TEST_F(RigOutput, MayBeAnOldFileThatIsNoInput) {
  write_file("out/refined.cal", "old");
  EXPECT_EQ(why_not("out/refined.cal"), "");
}

TEST_F(RigOutput, IsNeitherTheCalibrationNorTheConfiguration) {
  EXPECT_NE(why_not("out/../rig.cal").find("is an input"), std::string::npos);
  EXPECT_NE(why_not("out\\..\\rig.txt").find("is an input"), std::string::npos);
}

TEST_F(RigOutput, IsNoPicture) {
  // The second of camera 1 is one that no frame takes.
  for (const char* picture : {"in/a1.png", "in\\a2.png", "out/../in/b1.png"}) {
    EXPECT_NE(why_not(picture).find("is an input"), std::string::npos) << picture;
  }
}

TEST_F(RigOutput, IsNoLinkToAPicture) {
  std::error_code failure;
  std::filesystem::create_hard_link("in/b1.png", "out/refined.cal", failure);
  if (failure) GTEST_SKIP() << "no links here: " << failure.message();
  EXPECT_NE(why_not("out/refined.cal").find("is an input"), std::string::npos);
}

TEST_F(RigOutput, IsNotTheCornerFileWhetherItIsThereOrNot) {
  EXPECT_NE(why_not("out/found.cal_corners.json").find("keeps the corners"), std::string::npos);
  write_file("out/found.cal_corners.json", "kept");
  EXPECT_NE(why_not("in/../out/found.cal_corners.json").find("keeps the corners"),
            std::string::npos);
}

TEST_F(RigOutput, NeedsNoConfigurationThatCanBeRead) {
  EXPECT_EQ(why_not_rig_output("out/refined.cal", "rig.cal", "none.txt"), "");
  EXPECT_NE(why_not_rig_output("rig.cal", "rig.cal", "none.txt").find("is an input"),
            std::string::npos);
}

TEST_F(RigOutput, WantsAFolderThatIsThere) {
  EXPECT_NE(why_not("nowhere/refined.cal").find("isn't there"), std::string::npos);
}

}  // namespace
}  // namespace ocpan

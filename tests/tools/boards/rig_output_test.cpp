#include "tools/boards/rig_output.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"
#include "tests/tools/pair_configuration.h"

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
    write_file("rig.txt", testing::pair_configuration("in", "out/found.cal"));
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

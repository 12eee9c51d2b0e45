#include "tools/check/config_remarks.h"

#include <gtest/gtest.h>

#include "tests/tools/check/config_walk_fixture.h"

namespace ocpan {
namespace {

using testing::ConfigWalk;
using testing::write_file;

class ConfigRemarks : public ConfigWalk {
 protected:
  // The remarks on the sound configuration with one line replaced, as "place: what".
  std::vector<std::string> remarks_with(std::size_t line, const std::string& text) const {
    const written_config config = walked_with(line, text);
    EXPECT_TRUE(config.refusals.empty()) << config.refusals.front().what;
    std::vector<std::string> texts;
    for (const finding& found : config_remarks(config)) {
      texts.push_back(found.where + ": " + found.what);
    }
    for (const finding& found : series_remarks(config)) {
      texts.push_back(found.where + ": " + found.what);
    }
    return texts;
  }

  void expect_remark(std::size_t line, const std::string& text, const std::string& remark) const {
    EXPECT_EQ(remarks_with(line, text), std::vector<std::string>{remark}) << text;
  }
};

TEST_F(ConfigRemarks, FindNothingInASoundConfiguration) {
  EXPECT_EQ(remarks_with(3, ""), std::vector<std::string>{});
}

TEST_F(ConfigRemarks, TellOfCharactersThatAreNotRead) {
  expect_remark(6, "  - width:640, height: 480, hfov: 62, lens: 0",
                "rig.txt:6:12: a blank is missing behind the \":\", so the library reads \"40\"");
  expect_remark(20, "    board_shape: [9,16]",
                "rig.txt:20:18: the library reads a board of 9 by 6 here");
  expect_remark(14, "    cameras: [1 ,2]", "rig.txt:14:14: the library reads the cameras 1 here");
}

TEST_F(ConfigRemarks, TellOfKeysAndNumbersTakenForOthers) {
  expect_remark(6, "  - width: 640, height: 480, my_hfov_x: 62, lens: 0",
                "rig.txt:6:30: \"my_hfov_x\" is taken for hfov");
  expect_remark(6, "  - width: 640, height: 480, hfov: 62, lens: fish",
                "rig.txt:6:46: \"fish\" is no number and read as 0");
  expect_remark(13, "  - set_name: 'b', board_scale: 25mm",
                "rig.txt:13:33: \"25mm\" is read as 25");
  expect_remark(6, "  - width: 640, width: 640, height: 480, hfov: 62, lens: 0",
                "rig.txt:6:17: width stands a second time");
  expect_remark(3, "camera_infos about width",
                "rig.txt:3:1: a line with \"width\" but without "
                "\":\" is passed over");
}

TEST_F(ConfigRemarks, TellOfValuesThatMakeNoSense) {
  expect_remark(6, "  - width: 0, height: 480, hfov: 62, lens: 0", "rig.txt:6:12: width is 0");
  expect_remark(6, "  - width: 640, height: 480, hfov: 190, lens: 0",
                "rig.txt:6:36: a rectilinear lens (0) can't see 190 degrees");
  expect_remark(13, "  - set_name: 'b', board_scale: 0", "rig.txt:13:33: board_scale is 0");
}

TEST_F(ConfigRemarks, DoubtAlikeLensesOfUnlikeFields) {
  expect_remark(6, "  - width: 1920, height: 1080, hfov: 191, lens: 2",
                "rig.txt:6:3: camera 2 has a hfov of 191 and camera 1 one of 190, but a "
                "calibration holds fisheyes alike in scale");
  expect_remark(6, "  - width: 640, height: 480, hfov: 190, lens: 2",
                "rig.txt:6:3: the pictures of camera 2 differ in size from those of camera 1, but "
                "a calibration holds fisheyes alike in centre and scale");
  EXPECT_TRUE(remarks_with(6, "  - width: 1920, height: 1080, hfov: 190, lens: 1").empty());
}

TEST_F(ConfigRemarks, DoubtABoardThatLooksTheSameTurned) {
  expect_remark(20, "    board_shape: [8, 6]",
                "rig.txt:20:18: a board of 8 by 6 looks the same after half a turn, so two "
                "cameras may count its corners from different ends");
  expect_remark(20, "    board_shape: [7, 7]",
                "rig.txt:20:18: a board of 7 by 7 looks the same after half a turn, and after a "
                "quarter, so two cameras may count its corners from different ends");
}

TEST_F(ConfigRemarks, TellOfAnOutputThatCanNotBeWritten) {
  const auto missing = remarks_with(2, "");
  ASSERT_EQ(missing.size(), 1u);
  EXPECT_EQ(missing[0], "rig.txt: rig.txt names no output");
  const auto elsewhere = remarks_with(2, "output_filename: 'nowhere/rig.cal'");
  ASSERT_EQ(elsewhere.size(), 1u);
  EXPECT_EQ(elsewhere[0].find("rig.txt:2:19: "), 0u) << elsewhere[0];
  EXPECT_NE(elsewhere[0].find("the folder nowhere isn't there"), std::string::npos);
}

TEST_F(ConfigRemarks, TellOfASubdirThatComesTooLate) {
  expect_remark(20, "    board_shape: [3, 4]\n    subdir: ['.']",
                "rig.txt:21:5: subdir stands behind filename_patterns and has no effect");
}

TEST_F(ConfigRemarks, TellOfASetThatIsDropped) {
  expect_remark(19, "    filename_patterns: ['^Right\\d\\.png$']",
                "rig.txt:19:24: set c is dropped, for no picture fits the pattern of its first "
                "camera");
}

TEST_F(ConfigRemarks, TellOfSeriesOfUnequalLength) {
  write_file(std::filesystem::path("pics") / "left0.png", "");
  const auto remarks = remarks_with(3, "");
  ASSERT_EQ(remarks.size(), 2u);
  EXPECT_EQ(remarks[0],
            "rig.txt:11:24: set a: the series are of unequal length (camera 1 has 3, camera 2 has "
            "2); passed over: left2.png");
  EXPECT_EQ(remarks[1],
            "rig.txt:11:24: set a: from frame 0 on the pictures don't carry the same number: "
            "left0.png of camera 1 is paired with right1.png of camera 2");
}

TEST_F(ConfigRemarks, TellOfAPictureThatStandsForTwoCameras) {
  expect_remark(11, "    filename_patterns: ['^left\\d+\\.png$', '^left\\d\\.png$']",
                "rig.txt:11:24: set a: left1.png stands for camera 1 and for camera 2");
}

}  // namespace
}  // namespace ocpan


#include <gtest/gtest.h>

#include "tests/tools/check/config_walk_fixture.h"

namespace ocpan {
namespace {

using testing::ConfigWalk;
using testing::sound;
using testing::text_of;

TEST_F(ConfigWalk, TakesASoundConfiguration) {
  const written_config config = walked(text_of(sound));
  EXPECT_TRUE(config.refusals.empty());
  EXPECT_EQ(config.output_file, "rig.cal");
  ASSERT_EQ(config.cameras.size(), 2u);
  EXPECT_EQ(config.cameras[1].read.width, 640);
  EXPECT_EQ(config.cameras[1].place.line, 6u);
  EXPECT_EQ(config.cameras[1].place.column, 3u);
  ASSERT_EQ(config.sets.size(), 3u);
  EXPECT_EQ(config.sets[0].read.cameras.at(1).files.size(), 2u);
  ASSERT_EQ(config.sets[0].keys.size(), 6u);
  EXPECT_EQ(config.sets[0].keys[1].key, "board_scale");
  EXPECT_EQ(config.sets[0].keys[1].place.column, 20u);
  EXPECT_EQ(config.sets[0].keys[1].value_at.column, 33u);
  EXPECT_EQ(config.sets[0].keys[1].value, "25.0");
}

TEST_F(ConfigWalk, AgreesWithTheLibraryWhenALineIsMissing) {
  for (std::size_t line = 0; line < sound.size(); ++line) {
    std::vector<std::string> lines = sound;
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(line));
    expect_agreement(text_of(lines));
  }
  EXPECT_EQ(refused_ + taken_, 20);
  EXPECT_GE(refused_, 16);
}

TEST_F(ConfigWalk, TellsAllFaultsWithTheirPlaces) {
  std::vector<std::string> lines = sound;
  lines[4] = "  - width: 1920, heigth: 1080, hfov: 190, lens: 3";
  lines[10] = "    filename_patterns: ['^left\\d+\\.png$']";
  lines[15] = "    board_shape: [9,6]";
  const written_config config = walked(text_of(lines));
  std::vector<std::string> places;
  for (const finding& refusal : config.refusals) places.push_back(refusal.where);
  EXPECT_EQ(places, (std::vector<std::string>{"rig.txt:5:18", "rig.txt:5:49", "rig.txt:5:3",
                                              "rig.txt:11:24", "rig.txt:16:21"}));
  EXPECT_EQ(config.refusals.at(0).what, "\"heigth\" is no key of a camera");
  EXPECT_EQ(config.refusals.at(2).what, "this camera lacks height");
}

TEST_F(ConfigWalk, NamesThePatternAndTheNameItFailsAt) {
  const written_config config = walked_with(15, "    filename_patterns: ['left1']");
  ASSERT_EQ(config.refusals.size(), 1u);
  EXPECT_EQ(config.refusals[0].where, "rig.txt:15:26");
  EXPECT_EQ(config.refusals[0].what, "the pattern 'left1' fails at the name \"left1.png\"");
  EXPECT_NE(config.refusals[0].mend.find("end the pattern with \"$\""), std::string::npos);
}

TEST_F(ConfigWalk, TellsOfAFoldersDotMeetingAPattern) {
  const written_config config = walked_with(15, "    filename_patterns: ['.eft\\d\\.png$']");
  ASSERT_EQ(config.refusals.size(), 1u);
  EXPECT_NE(config.refusals[0].what.find("fails at the name \".\""), std::string::npos);
}

TEST_F(ConfigWalk, TellsOfBlanksBehindAList) {
  const written_config config = walked_with(15, "    filename_patterns: ['^left\\d\\.png$']   ");
  ASSERT_EQ(config.refusals.size(), 1u);
  EXPECT_EQ(config.refusals[0].what,
            "blanks behind the list of patterns are read as one more pattern");
}

TEST_F(ConfigWalk, TellsOfAByteOrderMarkAndNothingThatFollows) {
  const written_config config = walked_with(1,
                                            "\xEF\xBB\xBF"
                                            "base_directory: 'pics'");
  ASSERT_EQ(config.refusals.size(), 1u);
  EXPECT_EQ(config.refusals[0].what, "the file begins with a byte order mark");
}

TEST_F(ConfigWalk, TellsOfAFaultyBaseFolderOnce) {
  for (const char* line : {"base_directory: pics'", "base_directory: 'nowhere'"}) {
    EXPECT_EQ(walked_with(1, line).refusals.size(), 1u) << line;
  }
}

TEST_F(ConfigWalk, TellsOfACommentThatHoldsAColonOrADash) {
  for (const std::size_t line : {3u, 6u, 10u, 16u}) {
    const written_config config =
        walked_with(line, sound.at(line - 1) + "\n  # note: of two, and more: all");
    ASSERT_EQ(config.refusals.size(), 1u) << line;
    EXPECT_EQ(config.refusals[0].where, "rig.txt:" + std::to_string(line + 1) + ":3") << line;
    EXPECT_EQ(config.refusals[0].what, "a comment holds a \":\" and is taken for a key") << line;
  }
  const written_config config = walked_with(9, "    cameras: [1, 2]\n    # - all of them");
  ASSERT_EQ(config.refusals.size(), 1u);
  EXPECT_EQ(config.refusals[0].where, "rig.txt:10:5");
}

TEST_F(ConfigWalk, TellsThatADashBeginsASet) {
  const written_config config = walked_with(16, "    board_shape: [9, 6]\n# two-sided");
  ASSERT_EQ(config.refusals.size(), 1u);
  EXPECT_EQ(config.refusals[0].where, "rig.txt:17:1");
}

TEST_F(ConfigWalk, TellsOfACameraThatIsNotThere) {
  const written_config config = walked_with(14, "    cameras: [3]");
  ASSERT_EQ(config.refusals.size(), 1u);
  EXPECT_EQ(config.refusals[0].where, "rig.txt:14:14");
  EXPECT_EQ(config.refusals[0].what, "there is no camera 3");
}

}  // namespace
}  // namespace ocpan

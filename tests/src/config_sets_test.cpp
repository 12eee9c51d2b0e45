#include <sstream>

#include <gtest/gtest.h>

#include "tests/src/sets_section.h"

namespace ocpan {
namespace {

using testing::config_run;
using testing::expect_badly_formed;
using testing::expect_malformed;
using testing::run_sets;

std::vector<int> ids_of(const std::string& list) {
  const config_run run = run_sets("- cameras: " + list + "\n");
  std::vector<int> ids;
  EXPECT_EQ(run.sets.size(), 1u);
  for (const set_camera& camera : run.sets.at(0).cameras) {
    ids.push_back(camera.id);
    EXPECT_TRUE(camera.files.empty());
    EXPECT_EQ(camera.file_type, 0);
  }
  return ids;
}

const std::string two = "- cameras: [1, 2]\n";

// ---- set_name, board_scale, sets and lines

TEST(SetsSection, ReadsNameAndScaleOfOneLine) {
  const config_run run = run_sets("  - set_name: 'wall, north', board_scale: 25.5\n");
  ASSERT_EQ(run.sets.size(), 1u);
  EXPECT_STREQ(run.sets[0].set_prefix, "wall, north");
  EXPECT_EQ(run.sets[0].set_prefix, run.pool.front().c_str());
  EXPECT_EQ(run.sets[0].board_scale, 25.5f);
  EXPECT_EQ(run.sets[0].board_width, -1);
  EXPECT_EQ(run.sets[0].board_height, -1);
  EXPECT_TRUE(run.sets[0].save_frames);
}

TEST(SetsSection, TakesADashWithinAValueAsText) {
  const config_run run = run_sets("- set_name: 'a-b', board_scale: -2\n");
  ASSERT_EQ(run.sets.size(), 1u);
  EXPECT_STREQ(run.sets[0].set_prefix, "a-b");
  EXPECT_EQ(run.sets[0].board_scale, -2.0f);
}

TEST(SetsSection, ReportsANameWithoutQuotesWithTheValueAsCut) {
  expect_malformed("- set_name: wall, board_scale: 1\n", "Badly formed line: wall\n");
  expect_malformed("- set_name: 'wall\n", "Badly formed line: 'wall\n");
  expect_malformed("- set_name: \n", "Badly formed line: \n");
  expect_malformed("- set_name:,board_scale: 1\n", "Badly formed line: \n");
}

TEST(SetsSection, CutsTheFirstCharacterBehindTheColon) {
  expect_malformed("- set_name:'wall'\n", "Badly formed line: wall'\n");
}

TEST(SetsSection, ReadsAnEmptyScaleAsZero) {
  EXPECT_EQ(run_sets("- board_scale: \n").sets.at(0).board_scale, 0.0f);
  EXPECT_EQ(run_sets("- board_scale:,cameras: []\n").sets.at(0).board_scale, 0.0f);
}

TEST(SetsSection, FindsKeysWithinWordsInTheirOrder) {
  const config_run run = run_sets("- my_board_scale_set_name_x: '5'\n  board_scale_cameras: 3\n");
  EXPECT_STREQ(run.sets.at(0).set_prefix, "5");
  EXPECT_EQ(run.sets.at(0).board_scale, 3.0f);
}

TEST(SetsSection, SkipsLinesWithoutColonAndDash) {
  EXPECT_EQ(run_sets("\n  \nset_name\n").printed,
            "Invalid number of calibration sets supplied: 0, should be at least 2*num cameras-1, "
            "ideally more\n");
}

TEST(SetsSection, BeginsASetAtADashWithoutColon) {
  const config_run run = run_sets("-\n  set_name: 'a'\n");
  ASSERT_EQ(run.sets.size(), 1u);
  EXPECT_STREQ(run.sets[0].set_prefix, "a");
}

TEST(SetsSection, ReportsAnUnknownKey) {
  for (const char* line : {"  - odd: 1", "  - odd:", "  - odd: 1 set_name: 'a'"}) {
    expect_malformed(std::string(line) + "\n", "Unrecognised calibration_sets:   - odd\n");
  }
  expect_malformed("- board_scale: 1, odd : 1\n", "Unrecognised calibration_sets:  odd \n");
  expect_malformed("odd: 1\n", "Unrecognised calibration_sets: odd\n");
}

TEST(SetsSection, ReportsASecondCalibrationSets) {
  expect_malformed("calibration_sets:\n", "Unrecognised calibration_sets: calibration_sets\n");
}

TEST(SetsSection, RefusesAColonAtTheEndOfALine) {
  for (const char* key :
       {"set_name", "board_scale", "cameras", "subdir", "filename_patterns", "board_shape"}) {
    expect_badly_formed("-\n", std::string("  ") + key + ":");
  }
}

TEST(SetsSection, RefusesKeysThatNoCommaParts) {
  expect_badly_formed("", "- set_name: 'a' board_scale: 1");
  expect_badly_formed("", "- set_name: 'a:b'");
  expect_badly_formed(two, "  filename_patterns: ['a:b', 'c']");
}

TEST(SetsSection, TakesTheTextBehindACommaInAQuotedValueAsAKey) {
  expect_malformed("- set_name: 'a, b:c'\n", "Badly formed line: 'a\n");
  expect_malformed("- cameras: [1, 2]\n  subdir: ['a', 'b:c']\n",
                   "Unrecognised calibration_sets:  'b\n");
}

TEST(SetsSection, RefusesAFieldAheadOfTheFirstDash) {
  expect_badly_formed("", "set_name: 'a'");
  expect_badly_formed("", "  board_shape: [2, 2]");
}

// ---- incomplete sets

TEST(SetsSection, ReportsAnIncompleteSetAtTheNextOne) {
  expect_malformed("-\n-\n",
                   "Calibration Struct details incomplete\n"
                   "Details present were: set_name 0, subdir(optional) 0, cameras 0, "
                   "filename_patterns 0, board_shape 0, board_scale 0\n");
}

TEST(SetsSection, ReportsAnIncompleteSetAtTheEndOfTheFile) {
  expect_malformed("-\n",
                   "Calibration Struct details incomplete\n"
                   "Details present were: set_name 0, subdir (optional)0, cameras 0, "
                   "filename_patterns 0, board_shape 0, board_scale 0\n");
}

TEST(SetsSection, TellsOfAnIncompleteSetBeforeItCountsCamerasAndSets) {
  const std::string camera = "  - width: 10, height: 10, hfov: 60, lens: 0\n";
  for (const std::string& cameras : {std::string(), camera + camera}) {
    const config_run run =
        testing::run_config("base_directory: ''\noutput_filename: 'o'\ncamera_info:\n" + cameras +
                            "calibration_sets:\n-\n");
    EXPECT_EQ(run.result, 5);
    EXPECT_EQ(run.printed.rfind("Calibration Struct details incomplete\n", 0), 0u) << run.printed;
  }
}

TEST(SetsSection, AsksForEachOfFiveKeysAndNotForSubdir) {
  const char* const names[] = {"set_name",          "subdir",      "cameras",
                               "filename_patterns", "board_shape", "board_scale"};
  const char* const lines[] = {"set_name: 'a'",        "subdir: '.'",         "cameras: []",
                               "filename_patterns: '", "board_shape: [3, 3]", "board_scale: 1"};
  for (int missing = 0; missing < 6; ++missing) {
    std::string set = "-\n";
    std::ostringstream shown;
    for (int i = 0; i < 6; ++i) {
      const bool left_out = i == missing;
      if (!left_out) set += std::string(lines[i]) + "\n";
      shown << (i ? ", " : "") << names[i] << (i == 1 ? " (optional)" : " ") << (left_out ? 0 : 1);
    }
    const config_run run = run_sets(set);
    if (missing == 1) {
      EXPECT_EQ(run.result, 0);
    } else {
      EXPECT_EQ(run.result, 5);
      EXPECT_EQ(run.printed, "Calibration Struct details incomplete\nDetails present were: " +
                                 shown.str() + "\n");
    }
  }
}

TEST(SetsSection, ForgetsWhatTheSetBeforeHad) {
  const std::string complete =
      "- set_name: 'a', board_scale: 1\n  cameras: []\n  subdir: '.'\n  filename_patterns: '\n"
      "  board_shape: [3, 4]\n";
  expect_malformed(complete + "-\n",
                   "Calibration Struct details incomplete\n"
                   "Details present were: set_name 0, subdir (optional)0, cameras 0, "
                   "filename_patterns 0, board_shape 0, board_scale 0\n");
  EXPECT_EQ(run_sets(complete + complete).result, 0);
}

// ---- cameras

TEST(SetCameras, AreReadInListOrder) {
  EXPECT_EQ(ids_of("[1, 2]"), (std::vector<int>{1, 2}));
  EXPECT_EQ(ids_of("[3, 12, 3]"), (std::vector<int>{3, 12, 3}));
  EXPECT_EQ(ids_of("[4]"), std::vector<int>{4});
  EXPECT_EQ(ids_of("x[0, -1, 99] y"), (std::vector<int>{0, -1, 99}));
}

TEST(SetCameras, LoseACharacterWithoutABlankBehindTheComma) {
  EXPECT_EQ(ids_of("[1,2]"), std::vector<int>{1});
  EXPECT_EQ(ids_of("[1,23]"), (std::vector<int>{1, 3}));
}

TEST(SetCameras, MayBeNone) {
  EXPECT_TRUE(ids_of("[]").empty());
  EXPECT_EQ(ids_of("[ ]"), std::vector<int>{0});
  EXPECT_EQ(ids_of("[1, ]"), std::vector<int>{1});
}

TEST(SetCameras, OfASecondListAreAppended) {
  EXPECT_EQ(run_sets("- cameras: [1, 2]\n  cameras: [3]\n").sets.at(0).cameras.size(), 3u);
}

TEST(SetCameras, NeedTheirBrackets) {
  expect_malformed("- cameras: 1, 2\n", "cameras '[' not in expected location in line: 1, 2\n");
  expect_malformed("- cameras: [1, 2\n", "cameras ']' not in expected location in line: [1, 2\n");
  expect_malformed("- cameras: ]1, 2[\n", "cameras ']' not in expected location in line: ]1, 2[\n");
  expect_malformed("- cameras: \n", "cameras '[' not in expected location in line: \n");
}

// ---- board_shape

TEST(BoardShape, IsReadFromItsBrackets) {
  const config_run run = run_sets("- board_shape: [9, 6], board_scale: 2\n");
  EXPECT_EQ(run.sets.at(0).board_width, 9);
  EXPECT_EQ(run.sets.at(0).board_height, 6);
  EXPECT_EQ(run.sets.at(0).board_scale, 2.0f);
}

TEST(BoardShape, MayHaveMoreBlanks) {
  const config_run run = run_sets("- board_shape: x [ 3 ,   4 ] y\n");
  EXPECT_EQ(run.sets.at(0).board_width, 3);
  EXPECT_EQ(run.sets.at(0).board_height, 4);
}

TEST(BoardShape, EndsInSilenceAtASideBelowThree) {
  for (const char* shape : {"[2, 6]", "[6, 2]", "[-9, 6]", "[x, 6]", "[9, ]", "[2, 6", "[9,6]"}) {
    const config_run run = run_sets(std::string("- board_shape: ") + shape + "\n");
    EXPECT_EQ(run.result, 7) << shape;
    EXPECT_EQ(run.printed, "") << shape;
  }
}

TEST(BoardShape, LosesACharacterWithoutABlankBehindTheComma) {
  EXPECT_EQ(run_sets("- board_shape: [9,16]\n").sets.at(0).board_height, 6);
}

TEST(BoardShape, NamesTheSignItMisses) {
  const auto misplaced = [](const std::string& sign, const std::string& line) {
    expect_malformed(line + "\n",
                     "board_shape '" + sign + "' not in expected location in line: " + line + "\n");
  };
  misplaced("[", "- board_shape: 9, 6]");
  misplaced("[", "- board_shape: ");
  misplaced("'", "- board_shape: [9 6]");
  misplaced("'", "- board_shape: 1, [9 6]");
  misplaced("'", "- board_shape: [9, 6] board_scale: 2");  // cut at its own comma
  misplaced("]", "- board_shape: [9, 6");
  misplaced("]", "- board_shape: [9,]");  // the search begins behind it
  misplaced("]", "- board_shape: [9,");
}

}  // namespace
}  // namespace ocpan

#include <gtest/gtest.h>

#include "src/result_codes.h"
#include "tests/src/config_run.h"

namespace ocpan {
namespace {

using testing::config_run;
using testing::run_config;

const std::string too_few_sets =
    "Invalid number of calibration sets supplied: 0, should be at least 2*num cameras-1, "
    "ideally more\n";

config_run run_cameras(const std::string& lines) { return run_config("camera_info:\n" + lines); }

// Of one camera and nothing else wrong.
camera_details camera_of(const std::string& lines) {
  const config_run run = run_cameras(lines);
  EXPECT_EQ(run.printed, too_few_sets) << lines;
  EXPECT_EQ(run.cameras.size(), 1u) << lines;
  return run.cameras.empty() ? camera_details{} : run.cameras.front();
}

void expect_camera(const camera_details& camera, int width, int height, float hfov, int lens) {
  EXPECT_EQ(camera.width, width);
  EXPECT_EQ(camera.height, height);
  EXPECT_EQ(camera.hfov, hfov);
  EXPECT_EQ(camera.lens, lens);
}

void expect_badly_formed(const std::string& before, const std::string& line) {
  const config_run run = run_cameras(before + line + "\n");
  EXPECT_EQ(run.result, 5) << line;
  EXPECT_EQ(run.printed, "Badly formed line: " + line + "\n");
}

TEST(CamerasSection, ReadsACameraOfOneLine) {
  expect_camera(camera_of("  - width: 1920, height: 1080, hfov: 190.5, lens: 1\n"), 1920, 1080,
                190.5f, 1);
}

TEST(CamerasSection, ReadsACameraOfSeveralLinesInAnyOrder) {
  expect_camera(camera_of("- lens: 2\n  hfov: 220\n\n no colon - here\n  height: 7, width: 8\r\n"),
                8, 7, 220.0f, 2);
}

TEST(CamerasSection, ReadsAllCamerasInOrder) {
  const config_run run = run_cameras(
      "- width: 1, height: 2, hfov: 3, lens: 0\n"
      "- width: 4, height: 5, hfov: 6, lens: 1\n"
      "- width: 7, height: 8, hfov: 9, lens: 2\n");
  ASSERT_EQ(run.cameras.size(), 3u);
  expect_camera(run.cameras[0], 1, 2, 3.0f, 0);
  expect_camera(run.cameras[1], 4, 5, 6.0f, 1);
  expect_camera(run.cameras[2], 7, 8, 9.0f, 2);
}

TEST(CamerasSection, BeginsACameraAtEachDashOfALine) {
  const config_run run =
      run_cameras("- width: 1, height: 2, hfov: 3, lens: 0, - width: 4, height: 5\n");
  ASSERT_EQ(run.cameras.size(), 2u);
  expect_camera(run.cameras[1], 4, 5, -1.0f, -1);
}

TEST(CamerasSection, TakesADashInAValueAsASign) {
  expect_camera(camera_of("- width: -5, height: -6, hfov: -7.5, lens: 1\n"), -5, -6, -7.5f, 1);
}

TEST(CamerasSection, FindsKeysWithinWords) {
  expect_camera(camera_of("- xwidthx: 1, my_height: 2, my_hfov_x: 3, lensing: 1\n"), 1, 2, 3.0f, 1);
}

TEST(CamerasSection, TestsTheKeysInTheirOrder) {
  expect_camera(camera_of("- lens_hfov_height_width: 1\n"), 1, -1, -1.0f, -1);
  expect_camera(camera_of("- lens_hfov_height: 1\n"), -1, 1, -1.0f, -1);
  expect_camera(camera_of("- lens_hfov: 1\n"), -1, -1, 1.0f, -1);
}

TEST(CamerasSection, ReadsNumbersAsTheCLibraryDoes) {
  expect_camera(camera_of("- width: 12px, height:   +3.9, hfov: 1e2deg, lens: x\n"), 12, 3, 100.0f,
                0);
}

TEST(CamerasSection, TakesTheValueFromTwoCharactersBehindTheColon) {
  expect_camera(camera_of("- width:12, height:34\n"), 2, 4, -1.0f, -1);
}

TEST(CamerasSection, EndsAValueAtTheLastCommaAheadOfTheNextKey) {
  expect_camera(camera_of("- hfov: 1, 2, width: 3\n"), 3, -1, 1.0f, -1);
}

TEST(CamerasSection, ReadsAnEmptyValueAsZero) {
  expect_camera(camera_of("- height:,width: 5\n"), 5, 0, -1.0f, -1);
  expect_camera(camera_of("- height: ,width: 5\n"), 5, 0, -1.0f, -1);
  expect_camera(camera_of("- width: 5, height: \n"), 5, 0, -1.0f, -1);
  expect_camera(camera_of("- width: 5, height:9\n"), 5, 0, -1.0f, -1);
}

TEST(CamerasSection, DoesNotCheckTheLastCameraAtTheEndOfTheFile) {
  expect_camera(camera_of("- width: 5\n"), 5, -1, -1.0f, -1);
}

// ---- what ends the reading

TEST(CamerasSection, RefusesAColonAtTheEndOfALine) {
  expect_badly_formed("", "- width:");
  expect_badly_formed("- width: 5\n", "  height: 5, lens:");
}

TEST(CamerasSection, RefusesKeysThatNoCommaParts) {
  expect_badly_formed("", "- width: 5 height: 6");
  expect_badly_formed("", "- width:: 5");
  expect_badly_formed("", "- width: 5, height: 6 lens: 1");
}

TEST(CamerasSection, RefusesAFieldAheadOfTheFirstDash) {
  expect_badly_formed("", "width: 5");
  expect_badly_formed("", "  lens: 7, height: 5");
}

TEST(CamerasSection, ReportsAnUnknownKeyUpToItsColon) {
  for (const char* line : {"  - odd: 5, width: 6", "  - odd:", "  - odd: 5 width: 6"}) {
    const config_run run = run_cameras(std::string(line) + "\n");
    EXPECT_EQ(run.printed, "Unrecognised camera_info:   - odd\n") << line;
    EXPECT_EQ(map_result(run.result), -1) << line;
  }
}

TEST(CamerasSection, ReportsAnUnknownSecondKeyFromBehindTheComma) {
  const config_run run = run_cameras("- width: 5, odd : 5\n");
  EXPECT_EQ(run.printed, "Unrecognised camera_info:  odd \n");
  EXPECT_EQ(map_result(run.result), -1);
}

TEST(CamerasSection, ReportsAnUnknownKeyAheadOfTheFirstDash) {
  const config_run run = run_cameras("odd: 5\n");
  EXPECT_EQ(run.printed, "Unrecognised camera_info: odd\n");
  EXPECT_EQ(map_result(run.result), -1);
}

TEST(CamerasSection, GivesNoInternalCodeForItsGeneralFailures) {
  for (const char* line : {"- odd: 5\n", "- lens: 3\n"}) {
    const int result = run_cameras(line).result;
    for (int internal : {-1, 0, 1, 3, 4, 5, 6, 7}) EXPECT_NE(result, internal) << line;
  }
}

TEST(CamerasSection, RefusesALensOutOfRange) {
  const std::string line = "- width: 5, lens: 3x, hfov: 6";
  const config_run run = run_cameras(line + "\n");
  EXPECT_EQ(run.printed, "Lens expects 0, 1 or 2, got: '3x', in line: " + line + "\n");
  EXPECT_EQ(map_result(run.result), -1);
  EXPECT_EQ(run_cameras("- lens: -1\n").printed,
            "Lens expects 0, 1 or 2, got: '-1', in line: - lens: -1\n");
}

struct incomplete_case {
  const char* fields;
  const char* shown;
  int result;
};

TEST(CamerasSection, ReportsAnIncompleteCameraWithItsOddities) {
  const incomplete_case cases[] = {
      // Missing width, width again, missing hfov, and a lens that is there.
      {"height: 1, hfov: 1, lens: 0", "Width 1, Height 1, Hfov 0, Lens 1", 1},
      {"width: 1, hfov: 1, lens: 0", "Width 0, Height 0, Hfov 0, Lens 1", 0},
      {"width: 1, height: 1, lens: 0", "Width 0, Height 0, Hfov 1, Lens 1", 0},
      {"width: 1, height: 1, hfov: 1", "Width 0, Height 0, Hfov 0, Lens 0", 0},
      {"hfov: 1", "Width 1, Height 1, Hfov 0, Lens 0", 1},
      {"width: -1, height: 1, hfov: 1, lens: 0", "Width 1, Height 1, Hfov 0, Lens 1", 1},
  };
  for (const incomplete_case& c : cases) {
    for (const char* next : {"- width: 9, height: 9", "calibration_sets:"}) {
      const config_run run = run_cameras(std::string("- ") + c.fields + "\n" + next + "\n");
      EXPECT_EQ(run.printed,
                std::string("Camera Details incomplete\nDetails present were: ") + c.shown + "\n");
      EXPECT_EQ(run.result, c.result) << c.fields;
      EXPECT_EQ(run.cameras.size(), 1u) << c.fields;
      EXPECT_TRUE(run.sets.empty());
    }
  }
}

TEST(CamerasSection, AnswersAnIncompleteCameraAlikeOnALongLine) {
  for (std::size_t length : {255u, 256u, 100000u}) {
    const std::string padding(length - 9, ' ');
    EXPECT_EQ(run_cameras("- width: 1\n" + padding + "- hfov: 1\n").result, 0) << length;
    EXPECT_EQ(run_cameras("- hfov: 1\n" + padding + "- hfov: 1\n").result, 1) << length;
  }
}

TEST(CamerasSection, ForgetsTheLensOfTheCameraBefore) {
  const config_run run = run_cameras(
      "- width: 1, height: 1, hfov: 1, lens: 0\n"
      "- width: 1, height: 1, hfov: 1\n"
      "calibration_sets:\n");
  EXPECT_EQ(run.printed,
            "Camera Details incomplete\n"
            "Details present were: Width 0, Height 0, Hfov 0, Lens 0\n");
  EXPECT_EQ(run.cameras.size(), 2u);
}

TEST(CamerasSection, ReadsNothingBehindAnIncompleteCamera) {
  const config_run run = run_cameras(
      "- width: 1, height: 1, hfov: 1, lens: 0\n"
      "- width: 1\n"
      "calibration_sets:\n- set_name: 'a'\nodd: 1\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.cameras.size(), 2u);
  EXPECT_TRUE(run.sets.empty());
}

// ---- the section's end

TEST(CamerasSection, EndsAtAKeyThatHoldsCalibrationSets) {
  for (const char* line : {"calibration_sets:", "  the calibration_sets below: 5, odd: 6 - 7",
                           "- calibration_sets: x", "  hfov: 1, calibration_sets::"}) {
    const config_run run =
        run_cameras("- width: 1, height: 1, hfov: 1, lens: 0\n" + std::string(line) + "\nodd: 1\n");
    EXPECT_EQ(run.printed, "Unrecognised calibration_sets: odd\n") << line;
  }
}

TEST(CamerasSection, MayBeEmpty) {
  EXPECT_EQ(run_cameras("calibration_sets:\n").printed,
            "Invalid number of camera details supplied: 0, should be in  1..8\n");
}

TEST(CamerasSection, SkipsCalibrationSetsWithoutColon) {
  EXPECT_EQ(
      run_cameras("- width: 1, height: 1, hfov: 1, lens: 0\ncalibration_sets\nodd: 1\n").printed,
      "Unrecognised camera_info: odd\n");
}

}  // namespace
}  // namespace ocpan

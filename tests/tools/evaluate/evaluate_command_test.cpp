#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::run_here;
using testing::tool_run;
using testing::working_folder;
using testing::write_file;

constexpr const char* camera_line =
    "C_0:0 C_1:0 C_2:0 A_th:3.14159 A_ph:0 H_0:500 H_1:0 H_2:-320 V_0:0 V_1:500 V_2:-240 "
    "O_th:3.14159 O_ph:0 rho_0:0 rho_1:0 rho_2:0 L:1\n";

// A calibration of cameras without pictures, beside a configuration of two.
void write_inputs(const working_folder& folder, int cameras, int width) {
  std::string calibration;
  for (int c = 0; c < cameras; ++c) {
    calibration += "Width:" + std::to_string(width) + " Height:480 Lens:0 Hfov:62\n";
    calibration += camera_line;
  }
  write_file(folder.path() / "rig.cal", calibration);
  std::string configuration =
      "base_directory: '.'\n"
      "output_filename: 'found.cal'\n"
      "camera_info:\n"
      "  - width: 640, height: 480, hfov: 62, lens: 0\n"
      "  - width: 640, height: 480, hfov: 62, lens: 0\n"
      "calibration_sets:\n";
  for (const std::string set : {"a", "b", "c"}) {
    write_file(folder.path() / (set + "1.png"), "");
    configuration += "  - set_name: '" + set +
                     "', board_scale: 25.0\n"
                     "    cameras: [" +
                     (set == "b" ? "2" : "1") +
                     "]\n"
                     "    filename_patterns: ['^" +
                     set +
                     "\\d\\.png$']\n"
                     "    board_shape: [9, 6]\n";
  }
  write_file(folder.path() / "rig.txt", configuration);
}

TEST(EvaluateCommand, CalibrationOfOtherCountIsRefused) {
  const working_folder folder;
  write_inputs(folder, 3, 640);
  const tool_run run = run_here("evaluate rig.cal rig.txt");
  EXPECT_EQ(run.code, 6);
  EXPECT_NE(run.err.find("rig.cal holds 3 cameras but rig.txt 2"), std::string::npos) << run.err;
}

TEST(EvaluateCommand, CalibrationOfOtherSizeIsRefused) {
  const working_folder folder;
  write_inputs(folder, 2, 800);
  const tool_run run = run_here("evaluate rig.cal rig.txt");
  EXPECT_EQ(run.code, 6);
  EXPECT_NE(run.err.find("camera 1 has pictures of 800 x 480"), std::string::npos) << run.err;
}

TEST(EvaluateCommand, MissingInputsAreNamed) {
  const working_folder folder;
  write_inputs(folder, 2, 640);
  tool_run run = run_here("evaluate none.cal rig.txt");
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.err.find("none.cal can't be used"), std::string::npos) << run.err;
  run = run_here("evaluate rig.cal none.txt");
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.err.find("none.txt can't be opened"), std::string::npos) << run.err;
  EXPECT_EQ(run.out, "");
}

TEST(EvaluateCommand, NumberThatIsNoneIsRefused) {
  const working_folder folder;
  write_inputs(folder, 2, 640);
  std::string text = testing::read_file(folder.path() / "rig.cal");
  text.replace(text.find("L:1\n"), 4, "L:nan\n");
  write_file(folder.path() / "rig.cal", text);
  const tool_run run = run_here("evaluate rig.cal rig.txt");
  EXPECT_EQ(run.code, 4);
  EXPECT_NE(run.err.find("L:nan"), std::string::npos) << run.err;
}

TEST(EvaluateCommand, RigWithoutABoardIsUnusable) {
  const working_folder folder;
  write_inputs(folder, 2, 640);
  const tool_run run = run_here("evaluate rig.cal rig.txt --json numbers.json");
  EXPECT_EQ(run.code, 11);
  EXPECT_NE(run.out.find("Verdict: unusable"), std::string::npos) << run.out << run.err;
  EXPECT_NE(testing::read_file(folder.path() / "numbers.json").find("\"verdict\": \"unusable\""),
            std::string::npos);
}

TEST(EvaluateCommand, MorePartsThanFramesIsWrongUsage) {
  const working_folder folder;
  write_inputs(folder, 2, 640);
  EXPECT_EQ(run_here("evaluate rig.cal rig.txt --hold-out 1").code, 64);
  const tool_run run = run_here("evaluate rig.cal rig.txt --hold-out 4");
  EXPECT_EQ(run.code, 64);
  EXPECT_NE(run.err.find("--hold-out 4: there are only 3 frames"), std::string::npos) << run.err;
}

TEST(EvaluateCommand, JsonOntoAnInputIsRefused) {
  const working_folder folder;
  write_inputs(folder, 2, 640);
  for (const std::string name : {"rig.cal", "rig.txt", "a1.png", "found.cal_corners.json"}) {
    const bool was_there = std::filesystem::exists(name);
    const std::string before = was_there ? testing::read_file(name) : "";
    const tool_run run = run_here("evaluate rig.cal rig.txt --json " + name);
    EXPECT_EQ(run.code, 3) << name;
    EXPECT_NE(run.err.find("--json: " + name), std::string::npos) << run.err;
    ASSERT_EQ(std::filesystem::exists(name), was_there) << name;
    EXPECT_EQ(was_there ? testing::read_file(name) : "", before) << name;
  }
}

TEST(EvaluateCommand, UnreadablePicturesAreNamedAndCounted) {
  const working_folder folder;
  write_inputs(folder, 2, 640);
  const tool_run run = run_here("evaluate rig.cal rig.txt");
  EXPECT_NE(run.out.find("Pictures left out: 3\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("a1.png: it can't be opened or decoded"), std::string::npos) << run.out;
}

TEST(EvaluateCommand, JsonThatCannotBeWrittenIsToldFirst) {
  const working_folder folder;
  const tool_run run = run_here("evaluate none.cal none.txt --json nowhere/x.json");
  EXPECT_EQ(run.code, 3);
}

}  // namespace
}  // namespace ocpan

#include "tools/cal_run.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"
#include "tools/cal_child.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::working_folder;
using testing::write_file;

constexpr const char* configuration = "output_filename: 'rig.cal'\ncamera_info:\n";

const cal_reply good = {0, {1.5, 0.1 + 0.2, 2808, 12.25, 0.5}};

// A folder to work in, with a configuration and a script that stands in for the child.
class CalRun : public ::testing::Test {
 protected:
  void SetUp() override { write_file("rig.txt", configuration); }

  // What the script does first; the reply follows unless it ends before.
  void child_does(const std::string& script, const cal_reply& reply = good) {
    write_file("reply", pack(reply));
    write_file("child", "#!/bin/sh\nconfig=$3 channel=$4\n" + script +
                            "\ncat reply > /proc/self/fd/$channel\n");
    std::filesystem::permissions("child", std::filesystem::perms::owner_all);
  }

  void run() {
    out_ = printed_by([&] {
      ::testing::internal::CaptureStderr();
      code_ = run_cal(options_, "./child");
      err_ = ::testing::internal::GetCapturedStderr();
    });
  }

  // Whether a text stands in one printed before.
  static bool has(const std::string& printed, const std::string& text) {
    return printed.find(text) != std::string::npos;
  }

  const working_folder folder_;
  cal_options options_ = {"rig.txt", false, ""};
  int code_ = -1;
  std::string out_;
  std::string err_;
};

TEST(CalReply, ComesBackToTheLastBit) {
  cal_reply reply = {-1,
                     {0.1, std::numeric_limits<double>::denorm_min(), -0.0,
                      std::numeric_limits<double>::infinity(), 1e300}};
  const auto back = unpack_cal_reply(pack(reply));
  ASSERT_TRUE(back);
  EXPECT_EQ(back->result, -1);
  EXPECT_EQ(std::memcmp(&back->measures, &reply.measures, sizeof(qa_summary)), 0);
}

TEST(CalReply, IsNothingUnlessWhole) {
  EXPECT_FALSE(unpack_cal_reply(""));
  EXPECT_FALSE(unpack_cal_reply(pack(good).substr(1)));
  EXPECT_FALSE(unpack_cal_reply(pack(good) + "x"));
}

TEST_F(CalRun, PassesTheLinesThroughInOrderAheadOfTheTable) {
  child_does("printf 'one\\n\\n  two \\n'; printf 'thr'; printf 'ee'");
  run();
  EXPECT_EQ(code_, 0);
  EXPECT_EQ(out_.substr(0, 18), "one\n\n  two \nthree\n");
}

TEST_F(CalRun, NamesTheConfigurationToTheChild) {
  child_does("echo \"$1 $2 $config\"");
  run();
  EXPECT_EQ(out_.substr(0, out_.find('\n')), "call-ocPAN_Cal -- rig.txt");
}

TEST_F(CalRun, EndsWithTheMeasures) {
  child_does("");
  run();
  EXPECT_TRUE(has(out_, "  Average reprojection error        0.3 pixels\n")) << out_;
  EXPECT_TRUE(has(out_, "  Maximum reprojection error        1.5 pixels\n"));
  EXPECT_TRUE(has(out_, "  Matched points                    2808\n"));
  EXPECT_TRUE(has(out_, "  Distance ratio, all boards        12.25\n"));
  EXPECT_TRUE(has(out_, "  Distance ratio, least of a set    0.5\n"));
  EXPECT_EQ(err_, "");
}

TEST_F(CalRun, LeavesTheLinesOutWhenQuiet) {
  child_does("echo one");
  options_.quiet = true;
  run();
  EXPECT_FALSE(has(out_, "one\n"));
  EXPECT_TRUE(has(out_, "Measures:\n"));
}

TEST_F(CalRun, TellsTheLastLinesOfAFailureWhenQuiet) {
  child_does("printf 'a\\nb\\nc\\n\\nd\\n'", {4, {}});
  options_.quiet = true;
  run();
  EXPECT_EQ(code_, 4);
  EXPECT_EQ(out_, "");
  EXPECT_EQ(err_.find("oc_pan: the library said: b\noc_pan: the library said: c\n"
                      "oc_pan: the library said: d\n"),
            0u)
      << err_;
}

TEST_F(CalRun, ListsWhatThisRunWrote) {
  write_file("rig.cal_distance.csv", "old");
  std::filesystem::last_write_time("rig.cal_distance.csv", {});
  child_does("echo x > rig.cal; echo x > rig.cal_QA_Measures.txt");
  run();
  EXPECT_TRUE(has(out_, "  Calibration file  rig.cal\n")) << out_;
  EXPECT_TRUE(has(out_, "  Board distances   rig.cal_distance.csv (not written)\n"));
  EXPECT_TRUE(has(out_, "  Measures          rig.cal_QA_Measures.txt\n"));
}

TEST_F(CalRun, CountsTheDebugPicturesThatThisRunWrote) {
  std::filesystem::create_directory("tmp");
  write_file("tmp/a_vid_0_0.jpg", "old");
  std::filesystem::last_write_time("tmp/a_vid_0_0.jpg", {});
  child_does(
      "echo '-----------Step 1. Chessboard detection-----------'\n"
      "for i in 0 1 2; do printf 'detect .\\\\tmp\\\\a_vid_0_%d.jpg chessboard failed\\n' $i; "
      "done\n"
      "echo x > tmp/a_vid_0_1.jpg");
  run();
  EXPECT_TRUE(has(out_, "  Debug pictures    tmp: 1 of 3\n")) << out_;
  EXPECT_TRUE(has(out_, "not found in 3"));
}

TEST_F(CalRun, MakesTheDebugFolderForTheChild) {
  child_does("test -d tmp && echo there; echo x > tmp/picture");
  run();
  EXPECT_EQ(out_.find("there\n"), 0u);
  EXPECT_TRUE(std::filesystem::exists("tmp/picture"));
}

TEST_F(CalRun, TakesADebugFolderAwayThatStayedEmpty) {
  child_does("", {6, {}});
  run();
  EXPECT_FALSE(std::filesystem::exists("tmp"));
}

TEST_F(CalRun, LeavesAnEmptyDebugFolderThatWasThere) {
  std::filesystem::create_directory("tmp");
  child_does("", {6, {}});
  run();
  EXPECT_TRUE(std::filesystem::exists("tmp"));
}

TEST_F(CalRun, WarnsOfAFileInPlaceOfTheDebugFolder) {
  write_file("tmp", "mine");
  child_does("");
  run();
  EXPECT_EQ(code_, 0);
  EXPECT_TRUE(has(err_, "warning: no debug pictures")) << err_;
  EXPECT_EQ(read_file("tmp"), "mine");
}

TEST_F(CalRun, WarnsOfACalibrationWithoutAnyBoard) {
  child_does("", {0, {}});
  run();
  EXPECT_EQ(code_, 0);
  EXPECT_TRUE(has(err_, "warning: no board was found in any picture")) << err_;
}

TEST_F(CalRun, EndsWithTheLibrarysCode) {
  for (const int result : {1, 2, 3, 4, 5, 6}) {
    child_does("", {result, {}});
    run();
    EXPECT_EQ(code_, result);
    EXPECT_TRUE(has(err_, "the calibration ended with " + std::to_string(result) + ": ")) << err_;
    EXPECT_FALSE(has(out_, "Measures:"));
  }
  child_does("", {-1, {}});
  run();
  EXPECT_EQ(code_, 255);
}

TEST_F(CalRun, TellsOfTheBoardWhenTheLibraryIsSilent) {
  child_does("", {6, {}});
  run();
  EXPECT_TRUE(has(err_, "at least 3 by 3 inner corners; correct board_shape in rig.txt")) << err_;
}

TEST_F(CalRun, TellsOfTheCamerasWhenTheConfigurationWasRead) {
  child_does("echo '    - set_prefix: a'; echo '     + files (2):'", {6, {}});
  run();
  EXPECT_TRUE(has(err_, "a rig has 2 to 8 cameras; correct camera_info in rig.txt")) << err_;
}

TEST_F(CalRun, PointsToTheLastLineAndTheWorkingFolderOtherwise) {
  child_does("echo 'Error(2) opening x'", {6, {}});
  run();
  EXPECT_TRUE(has(err_,
                  "last line above tells what to correct in rig.txt; its relative names "
                  "start from the working folder " +
                      std::filesystem::current_path().string()))
      << err_;
}

TEST_F(CalRun, WarnsOfPicturesOfAnotherSize) {
  child_does(
      "echo '-----------Step 1. Chessboard detection-----------'\n"
      "echo 'Bad or no Image Data for file x'",
      {0, {}});
  run();
  EXPECT_TRUE(has(err_, "check width and height in camera_info")) << err_;
}

TEST_F(CalRun, TellsOfAConfigurationThatCantBeOpened) {
  std::filesystem::remove("rig.txt");
  child_does("", {6, {}});
  run();
  EXPECT_EQ(code_, 6);
  EXPECT_TRUE(has(err_, "the configuration rig.txt can't be opened")) << err_;
}

TEST_F(CalRun, TellsOfAChildThatASignalEnded) {
  child_does("kill -SEGV $$");
  run();
  EXPECT_EQ(code_, 139);
  EXPECT_TRUE(has(err_, "ended by signal 11")) << err_;
  EXPECT_TRUE(has(err_, "no calibration file was written; exit code 139")) << err_;
}

TEST_F(CalRun, WarnsOfFilesThatABrokenRunLeft) {
  child_does("echo half > rig.cal; kill -KILL $$");
  run();
  EXPECT_EQ(code_, 137);
  EXPECT_TRUE(has(err_, "perhaps not to their end; don't use rig.cal")) << err_;
}

TEST_F(CalRun, TellsOfAnInterruption) {
  child_does("kill -TERM $PPID; exec sleep 20");
  run();
  EXPECT_EQ(code_, 143);
  EXPECT_TRUE(has(err_, "interrupted (signal 15")) << err_;
}

TEST_F(CalRun, TellsOfAChildThatEndedWithoutAResult) {
  child_does("exit 0");
  run();
  EXPECT_EQ(code_, 70);
  EXPECT_TRUE(has(err_, "ended with exit code 0 without a result")) << err_;
}

TEST_F(CalRun, TellsOfAChildThatCantStart) {
  run();  // no script was made
  EXPECT_EQ(code_, 70);
  EXPECT_TRUE(has(err_, "couldn't be started (No such file or directory)")) << err_;
}

TEST_F(CalRun, WritesTheResultAsJson) {
  child_does("echo x > rig.cal");
  options_.json = "out.json";
  run();
  const auto json = nlohmann::json::parse(read_file("out.json"));
  EXPECT_EQ(json["result"], 0);
  EXPECT_EQ(json["exit_code"], 0);
  EXPECT_EQ(json["meaning"], "success");
  EXPECT_EQ(json["measures"]["average_reprojection_error"].get<double>(), 0.1 + 0.2);
  EXPECT_EQ(json["measures"]["max_reprojection_error"].get<double>(), 1.5);
  EXPECT_EQ(json["measures"]["matched_point_count"].get<double>(), 2808);
  EXPECT_EQ(json["measures"]["total_dist_ratio"].get<double>(), 12.25);
  EXPECT_EQ(json["measures"]["minimum_dist_ratio"].get<double>(), 0.5);
  EXPECT_EQ(json["files"], nlohmann::json({{"calibration", "rig.cal"}}));
}

TEST_F(CalRun, WritesABrokenRunAsJsonWithoutAResult) {
  child_does("kill -KILL $$");
  options_.json = "out.json";
  run();
  const auto json = nlohmann::json::parse(read_file("out.json"));
  EXPECT_TRUE(json["result"].is_null());
  EXPECT_TRUE(json["measures"].is_null());
  EXPECT_EQ(json["exit_code"], 137);
}

TEST_F(CalRun, RefusesAnOutputBeforeTheChildStarts) {
  child_does("echo started");
  write_file("rig.txt", "output_filename: 'missing/rig.cal'\ncamera_info:\n");
  run();
  EXPECT_EQ(code_, 3);
  EXPECT_EQ(out_, "");
  EXPECT_TRUE(has(err_, "the folder missing isn't there; make it")) << err_;
}

TEST_F(CalRun, RefusesAReportThatCantBeWritten) {
  child_does("");
  std::filesystem::create_directory("rig.cal_distance.csv");
  run();
  EXPECT_EQ(code_, 3);
  EXPECT_TRUE(has(err_, "rig.cal_distance.csv is a folder")) << err_;
}

TEST_F(CalRun, RefusesAConfigurationThatNamesNoOutput) {
  child_does("");
  write_file("rig.txt", "camera_info:\n");
  run();
  EXPECT_EQ(code_, 3);
  EXPECT_TRUE(has(err_, "rig.txt names no output; add a line output_filename: 'NAME'")) << err_;
}

TEST_F(CalRun, RefusesToWriteOverTheConfiguration) {
  child_does("");
  write_file("rig.txt", "output_filename: './rig.txt'\ncamera_info:\n");
  run();
  EXPECT_EQ(code_, 3);
  options_.json = "rig.txt";
  run();
  EXPECT_EQ(code_, 3);
  EXPECT_TRUE(has(err_, "--json names the configuration itself")) << err_;
}

TEST_F(CalRun, RefusesAJsonFileThatCantBeWritten) {
  child_does("echo started");
  options_.json = "missing/out.json";
  run();
  EXPECT_EQ(code_, 3);
  EXPECT_EQ(out_, "");
}

TEST_F(CalRun, RefusesAJsonFileThatTheCalibrationWrites) {
  child_does("");
  for (const char* name : {"rig.cal", "./rig.cal_distance.csv", "tmp/../rig.cal_QA_Measures.txt"}) {
    options_.json = name;
    run();
    EXPECT_EQ(code_, 3) << name;
    EXPECT_TRUE(has(err_, "--json names a file that the calibration writes")) << err_;
  }
}

TEST_F(CalRun, TakesTheMeasuresOfAnEarlierRunAwayAlsoWhenRefused) {
  child_does("test -e out.json && echo still there");
  write_file("out.json", "{}");
  options_.json = "out.json";
  run();
  EXPECT_FALSE(has(out_, "still there"));
  EXPECT_TRUE(std::filesystem::exists("out.json"));
  write_file("rig.txt", "camera_info:\n");
  run();
  EXPECT_EQ(code_, 3);
  EXPECT_FALSE(std::filesystem::exists("out.json"));
}

TEST_F(CalRun, TellsOfAnOlderCalibrationWhenOneFails) {
  write_file("rig.cal", "old");
  child_does("", {4, {}});
  run();
  EXPECT_TRUE(has(err_, "no calibration file was written, rig.cal is of an earlier run")) << err_;
}

TEST_F(CalRun, WarnsOfDebugPicturesThatWereNotWritten) {
  child_does(
      "printf -- '-----------Step 1. Chessboard detection-----------\\n'\n"
      "printf 'detect .\\\\tmp\\\\a_vid_0_0.jpg chessboard failed\\n'");
  run();
  EXPECT_EQ(code_, 0);
  EXPECT_TRUE(has(err_, "warning: 1 debug pictures couldn't be written to tmp")) << err_;
}

TEST_F(CalRun, DoesNotWaitForAPipeAfterAFailure) {
  ASSERT_EQ(std::system("mkfifo pipe"), 0);
  options_.configuration = "pipe";
  child_does("", {4, {}});
  run();
  EXPECT_EQ(code_, 4);
}

TEST_F(CalRun, FailsWhenTheJsonFileGetsNoSpace) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  child_does("");
  options_.json = "/dev/full";
  run();
  EXPECT_EQ(code_, 3);
  EXPECT_TRUE(has(err_, "/dev/full couldn't be written")) << err_;
}

TEST_F(CalRun, LeavesAPipeAsConfigurationToTheChild) {
  ASSERT_EQ(std::system("mkfifo pipe"), 0);
  options_.configuration = "pipe";
  child_does("echo here");
  run();
  EXPECT_EQ(code_, 0);
}

}  // namespace
}  // namespace ocpan

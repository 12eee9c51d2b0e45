#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include "include/oc_pan_cal.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::run_tool;
using testing::tool_run;
using testing::working_folder;
using testing::write_file;

// A working folder with two cameras, three sets and pictures without a board: the
// shortest run that goes through all steps.
class Cal : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory("in");
    for (const char* name : {"in/a.png", "in/b.png"}) {
      ASSERT_TRUE(cv::imwrite(name, cv::Mat(48, 64, CV_8UC1, cv::Scalar(128))));
    }
    write_file("rig.txt", configuration("rig.cal"));
  }

  static std::string configuration(const std::string& output) {
    std::string text = "base_directory: 'in'\noutput_filename: '" + output +
                       "'\ncamera_info:\n"
                       "  - width: 64, height: 48, hfov: 60, lens: 0\n"
                       "  - width: 64, height: 48, hfov: 60, lens: 0\n"
                       "calibration_sets:\n";
    for (const char* set : {"one", "two", "three"}) {
      text += std::string("  - set_name: '") + set +
              "', board_scale: 25.0\n    cameras: [1, 2]\n"
              "    filename_patterns: ['^a\\.png$', '^b\\.png$']\n    board_shape: [9, 6]\n";
    }
    return text;
  }

  const working_folder folder_;
};

TEST_F(Cal, PrintsExactlyTheLibrarysLinesAheadOfItsTable) {
  qa_summary summary;
  std::filesystem::create_directory("tmp");
  const std::string library = printed_by([&] { ocPAN_Cal("rig.txt", &summary); });
  const tool_run run = run_tool("cal rig.txt");
  EXPECT_EQ(run.code, 0);
  ASSERT_GT(library.size(), 100u);
  EXPECT_EQ(run.out.substr(0, library.size()), library);
  EXPECT_EQ(run.out.substr(library.size(), 11), "\nMeasures:\n");
}

TEST_F(Cal, TellsWhatWasWrittenAndWhatToDoubt) {
  const tool_run run = run_tool("cal rig.txt --quiet");
  EXPECT_EQ(run.code, 0);
  EXPECT_NE(run.out.find("Pictures: 6, board found in 0, not found in 6, unreadable 0, passed "
                         "over with them 0\n"),
            std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find("  Calibration file  rig.cal\n"), std::string::npos);
  EXPECT_NE(run.out.find("  Debug pictures    tmp: 6 of 6\n"), std::string::npos);
  EXPECT_NE(run.err.find("warning: no board was found in any picture"), std::string::npos);
  EXPECT_EQ(run.err.find('\r'), std::string::npos) << "a progress bar outside a terminal";
}

TEST_F(Cal, WritesTheLibrarysMeasuresAsJson) {
  const tool_run run = run_tool("cal --json out.json -q rig.txt");
  EXPECT_EQ(run.code, 0);
  const auto json = nlohmann::json::parse(read_file("out.json"));
  EXPECT_EQ(json["result"], 0);
  EXPECT_EQ(json["measures"]["matched_point_count"], 0.0);
  EXPECT_EQ(json["pictures"]["named"], 6);
  EXPECT_EQ(json["files"]["distances"], "rig.cal_distance.csv");
}

TEST_F(Cal, TellsOfAMissingConfiguration) {
  const tool_run run = run_tool("cal missing.txt");
  EXPECT_EQ(run.code, 6);
  EXPECT_EQ(run.out, "Couldn't open: missing.txt\n");
  EXPECT_NE(run.err.find("missing.txt can't be opened; check its name"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists("tmp"));
}

TEST_F(Cal, TakesANameThatStartsWithADash) {
  write_file("-rig.txt", configuration("rig.cal"));
  EXPECT_EQ(run_tool("cal -q -- -rig.txt").code, 0);
}

TEST_F(Cal, TakesBackslashesAsSeparators) {
  write_file("in/rig.txt", configuration("in\\rig.cal"));
  const tool_run run = run_tool("cal -q 'in\\rig.txt' --json 'in\\out.json'");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_TRUE(std::filesystem::exists("in/rig.cal"));
  EXPECT_TRUE(std::filesystem::exists("in/out.json"));
}

TEST_F(Cal, RefusesAnOutputFolderThatIsNotThere) {
  write_file("rig.txt", configuration("out/rig.cal"));
  const tool_run run = run_tool("cal rig.txt");
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("the folder out isn't there; make it"), std::string::npos) << run.err;
}

TEST_F(Cal, RefusesAnOutputFolderThatTakesNoFile) {
  if (!std::filesystem::is_directory("/proc")) GTEST_SKIP() << "no /proc";
  write_file("rig.txt", configuration("/proc/rig.cal"));
  const tool_run run = run_tool("cal rig.txt");
  EXPECT_EQ(run.code, 3);
  EXPECT_NE(run.err.find("/proc/rig.cal can't be written"), std::string::npos) << run.err;
}

TEST_F(Cal, RefusesAFolderAsOutput) {
  write_file("rig.txt", configuration("in"));
  const tool_run run = run_tool("cal rig.txt");
  EXPECT_EQ(run.code, 3);
  EXPECT_NE(run.err.find("in is a folder; name a file"), std::string::npos) << run.err;
}

TEST_F(Cal, EndsWithTheLibrarysCodeOfAMalformedConfiguration) {
  write_file("rig.txt", configuration("rig.cal") + "    nonsense: 1\n");
  const tool_run run = run_tool("cal rig.txt");
  EXPECT_EQ(run.code, 4);
  EXPECT_EQ(run.out, "Unrecognised calibration_sets:     nonsense\n");
  EXPECT_NE(run.err.find("last line above tells what to correct in rig.txt"), std::string::npos);
}

// The process whose parent is `parent`, 0 if there is none.
pid_t child_of(pid_t parent) {
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
    std::ifstream in(entry.path() / "stat");
    std::string pid, name, state;
    pid_t its_parent = 0;
    if (in >> pid >> name >> state >> its_parent && its_parent == parent) return std::stoi(pid);
  }
  return 0;
}

// Runs a calibration that waits for ever for its configuration, and sends the signal to
// the tool, or to its child, as soon as both are there.
tool_run run_and_signal(int number, bool to_child) {
  EXPECT_EQ(mkfifo("pipe", 0600), 0);
  std::atomic<bool> ended = false;
  std::thread sender([&] {
    while (!ended) {
      const pid_t tool = child_of(getpid());
      const pid_t child = tool > 0 ? child_of(tool) : 0;
      if (child > 0 && kill(to_child ? child : tool, number) == 0) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
  const tool_run run = run_tool("cal pipe");
  ended = true;
  sender.join();
  return run;
}

TEST_F(Cal, OutlivesAChildThatIsKilled) {
  if (!std::filesystem::is_directory("/proc/self/task")) GTEST_SKIP() << "no /proc";
  const tool_run run = run_and_signal(SIGKILL, true);
  EXPECT_EQ(run.code, 137);
  EXPECT_NE(run.err.find("ended by signal 9"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("no calibration file was written; exit code 137"), std::string::npos);
}

TEST_F(Cal, EndsWithItsChildWhenInterrupted) {
  if (!std::filesystem::is_directory("/proc/self/task")) GTEST_SKIP() << "no /proc";
  const tool_run run = run_and_signal(SIGINT, false);
  EXPECT_EQ(run.code, 130);
  EXPECT_NE(run.err.find("interrupted (signal 2"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace ocpan

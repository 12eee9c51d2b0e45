#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::run_here;
using testing::run_shell;
using testing::run_tool;
using testing::tool_run;

TEST(Tool, TellsTheVersionsThatAreLinked) {
  const tool_run run = run_tool("version");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "oc_pan " OCPAN_VERSION "\nliboc_pan_cal V" OCPAN_VERSION "\nOpenCV " +
                         cv::getVersionString() + "\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run_here("--version").out, run.out);
}

TEST(Tool, ListsItsCommands) {
  const tool_run run = run_here("--help");
  EXPECT_EQ(run.code, 0);
  for (const char* command : {"\n  cal ", "\n  simulate ", "\n  version "}) {
    EXPECT_NE(run.out.find(command), std::string::npos) << command;
  }
  EXPECT_EQ(run.out.find("call-"), std::string::npos) << "a hidden command shows";
}

TEST(Tool, ShowsExamplesInTheHelpOfEveryCommand) {
  for (const std::string command :
       {"cal", "simulate", "simulate boards", "simulate preset", "version"}) {
    const tool_run run = run_here(command + " --help");
    EXPECT_EQ(run.code, 0) << command;
    const std::size_t examples = run.out.find("\nExamples:");
    ASSERT_NE(examples, std::string::npos) << command;
    EXPECT_NE(run.out.find("\n  oc_pan " + command, examples), std::string::npos) << command;
  }
}

TEST(Tool, EndsWith64OnWrongUsage) {
  for (const char* arguments : {"", "nonsense", "version extra", "simulate", "simulate preset",
                                "cal", "cal a b", "cal a --nope", "cal a --json", "--nope"}) {
    const tool_run run = run_here(arguments);
    EXPECT_EQ(run.code, 64) << arguments;
    EXPECT_EQ(run.out, "") << arguments;
    EXPECT_NE(run.err.find("--help"), std::string::npos) << arguments;
  }
}

TEST(Tool, HandsItsExitCodeToTheShell) { EXPECT_EQ(run_tool("nonsense").code, 64); }

TEST(Tool, TellsWhenItsOutputGetsNoSpace) {
  const tool_run run = run_shell("exec \"$0\" version > /dev/full");
  EXPECT_EQ(run.code, 3);
  EXPECT_NE(run.err.find("standard output couldn't be written"), std::string::npos);
}

}  // namespace
}  // namespace ocpan

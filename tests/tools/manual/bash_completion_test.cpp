#include "tools/manual/bash_completion.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/tools/tool_process.h"
#include "tools/commands.h"

namespace ocpan {
namespace {

using strings = std::vector<std::string>;

// Has bash complete the last of some words, in a folder that holds the file "rig one.txt" and
// the folder "pictures".
strings completed(const std::string& words) {
  CLI::App app;
  int exit_code = 0;
  add_commands(app, exit_code);
  const testing::temp_folder folder;
  std::ofstream(folder.file("completion")) << bash_completion(help_of(app));
  std::ofstream(folder.file("ask"))
      << "set -u\n. ./completion\nmkdir here && cd here && mkdir pictures && touch 'rig one.txt'\n"
         "COMP_WORDS=("
      << words
      << ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n$(complete -p oc_pan | sed 's/.*-F "
         "\\([^ ]*\\).*/\\1/')\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n";
  const testing::tool_run run =
      testing::run_shell("cd '" + folder.file(".") + "' && exec bash --norc ask");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.err, "");
  strings lines;
  std::istringstream out(run.out);
  for (std::string line; std::getline(out, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

TEST(BashCompletion, CompletesCommands) {
  EXPECT_EQ(completed("oc_pan si"), strings{"simulate"});
  EXPECT_EQ(completed("oc_pan simulate bo"), strings{"boards"});
  EXPECT_EQ(completed("oc_pan --v"), strings{"--version"});
}

TEST(BashCompletion, LeavesOutHiddenCommands) {
  const strings all = completed("oc_pan ''");
  EXPECT_GE(all.size(), 12u);
  for (const std::string& word : all) EXPECT_EQ(word.find("call-"), std::string::npos) << word;
  EXPECT_TRUE(completed("oc_pan call-").empty());
}

TEST(BashCompletion, CompletesOptionsOfTheCommand) {
  EXPECT_EQ(completed("oc_pan cal --js"), strings{"--json"});
  EXPECT_EQ(completed("oc_pan cal rig.txt --js"), strings{"--json"});
  EXPECT_TRUE(completed("oc_pan version --js").empty());
}

TEST(BashCompletion, CompletesFileNames) {
  EXPECT_EQ(completed("oc_pan cal rig"), strings{"rig one.txt"});
  EXPECT_EQ(completed("oc_pan cal --json rig"), strings{"rig one.txt"});
  EXPECT_EQ(completed("oc_pan cal --json = rig"), strings{"rig one.txt"});
  EXPECT_EQ(completed("oc_pan cal --json ="), (strings{"pictures", "rig one.txt"}));
}

TEST(BashCompletion, CompletesTheWordsThatAnOptionTakes) {
  EXPECT_EQ(completed("oc_pan lut --face ''"), (strings{"129", "253"}));
  EXPECT_EQ(completed("oc_pan lut --face = 2"), strings{"253"});
}

TEST(BashCompletion, OffersNothingWhereANumberIsDue) {
  EXPECT_TRUE(completed("oc_pan lut --radius ''").empty());
}

}  // namespace
}  // namespace ocpan

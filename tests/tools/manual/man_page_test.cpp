#include "tools/manual/man_page.h"

#include <fstream>

#include <gtest/gtest.h>

#include "tests/tools/tool_process.h"
#include "tools/commands.h"

namespace ocpan {
namespace {

using testing::run_shell;
using testing::tool_run;

command_help whole_tool() {
  CLI::App app;
  int exit_code = 0;
  add_commands(app, exit_code);
  return help_of(app);
}

// A command with something of every kind.
command_help sample() {
  return {"tool dig",
          "Dig holes",
          {{{"PLACE"}, "FILE", "", {}, "", "Where to dig", true, false, true, true},
           {{"-d", "--depth"}, "METRES", "0 to 9", {}, "2", "How deep", false, false, true, false},
           {{"--quiet"}, "", "", {}, "", "Say nothing", false, true, false, false}},
          {{"", {"First text.", "", "Such as", "  {\"a\": 1}", "it goes on; see tool fill."}},
           {"Examples", {"  tool dig --depth 1 here"}},
           {"Exit codes", {"  0    dug", "  64   wrong usage,", "       or a typing error"}}},
          {}};
}

std::string sample_page() {
  const command_help fill = {"tool fill", "Fill holes", {}, {}, {}};
  const command_help fillet = {"tool fill-all", "Fill all holes", {}, {}, {}};
  return man_page(sample(), {"tool", "Does things.", {}, {}, {sample(), fill, fillet}}, "tool 1.0");
}

TEST(ManPage, KeepsEverySignAsItIs) {
  EXPECT_EQ(roff_text(R"(a-b \d 'x' "y" `z` ^ ~)"),
            R"(a\-b \(rsd \(aqx\(aq \(dqy\(dq \(gaz\(ga \(ha \(ti)");
  EXPECT_EQ(roff_text(".SH no\nand .5\n.so file"), "\\&.SH no\nand .5\n\\&.so file");
}

TEST(ManPage, IsNamedByTheWholeCommand) { EXPECT_EQ(page_name("tool dig deep"), "tool-dig-deep"); }

TEST(ManPage, LaysOutTheHelp) {
  EXPECT_EQ(sample_page(), R"(.TH TOOL\-DIG 1 "" "tool 1.0" "tool manual"
.SH NAME
tool\-dig \- Dig holes
.SH SYNOPSIS
\fBtool dig\fR \fB\-\-depth\fR \fIMETRES\fR [\fIOPTIONS\fR] \fIPLACE\fR...
.SH DESCRIPTION
Dig holes.
.PP
First text.
.PP
Such as
.PP
.EX
  {\(dqa\(dq: 1}
.EE
.PP
it goes on; see tool fill.
.SH OPTIONS
.TP
\fIPLACE\fR...
Where to dig
.TP
\fB\-d\fR, \fB\-\-depth\fR \fIMETRES\fR
How deep (0 to 9) [2]
.TP
\fB\-\-quiet\fR
Say nothing
.SH EXAMPLES
.EX
  tool dig \-\-depth 1 here
.EE
.SH EXIT STATUS
.TP
\fB0\fR
dug
.TP
\fB64\fR
wrong usage,
or a typing error
.SH SEE ALSO
\fBtool\fR(1),
\fBtool\-fill\fR(1)
)");
}

TEST(ManPage, ListsTheCommandsOfACommand) {
  const command_help tool = {"tool", "Does things.", {}, {}, {sample()}};
  const std::string page = man_page(tool, tool, "tool 1.0");
  EXPECT_NE(page.find("\ntool \\- Does things\n"), std::string::npos);
  EXPECT_NE(page.find(".SH DESCRIPTION\nDoes things.\n"), std::string::npos);
  EXPECT_NE(page.find("\n\\fBtool\\fR \\fICOMMAND\\fR ...\n"), std::string::npos);
  EXPECT_NE(page.find(".SH COMMANDS\n.TP\n\\fBtool\\-dig\\fR(1)\nDig holes\n"), std::string::npos);
}

TEST(ManPage, OfEveryCommandPassesTheFormatterWithoutAWarning) {
  if (run_shell("command -v groff").code != 0) GTEST_SKIP() << "groff isn't installed";
  const testing::temp_folder folder;
  const command_help tool = whole_tool();
  std::string files;
  std::size_t pages = 0;
  visit_commands(tool, [&](const command_help& command) {
    const std::string file = page_name(command.name) + ".1";
    std::ofstream(folder.file(file)) << man_page(command, tool, "oc_pan");
    files += " " + file;
    ++pages;
  });
  const tool_run run =
      run_shell("cd '" + folder.file(".") + "' && groff -man -Tascii -P-cbou -ww" + files);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  std::size_t formatted = 0;
  for (std::size_t at = 0; (at = run.out.find("SYNOPSIS", at)) != std::string::npos; ++at) {
    ++formatted;
  }
  EXPECT_EQ(formatted, pages);
  EXPECT_GE(pages, 17u);
}

}  // namespace
}  // namespace ocpan

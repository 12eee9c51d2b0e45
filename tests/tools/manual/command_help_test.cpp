#include "tools/manual/command_help.h"

#include <gtest/gtest.h>

namespace ocpan {
namespace {

using strings = std::vector<std::string>;

// A tool of two commands, one of them for itself.
struct small_tool {
  small_tool() {
    app.name("tool");
    app.description("Does things.");
    CLI::App* shown = app.add_subcommand("shown", "Do a thing");
    shown->add_option("FILES", files, "What to read")->type_name("FILE")->required();
    shown->add_flag("-q,--quiet", quiet, "Say nothing");
    shown->add_option("--side", side, "How long")
        ->type_name("MM")
        ->check(CLI::Range(1.0, 20.5))
        ->capture_default_str();
    shown->add_option("--kind", kind, "Which")->type_name("NAME")->check(CLI::IsMember({"a", "b"}));
    shown->add_option("--secret", secret, "Nobody's business")->group("");
    shown->footer("More of it.\n\nExamples:\n  tool shown x\n\n  tool shown y\n");
    app.add_subcommand("hidden", "")->group("");
  }
  CLI::App app;
  strings files;
  bool quiet = false;
  double side = 2.5;
  std::string kind, secret;
};

const option_help* option_named(const command_help& command, const std::string& name) {
  for (const option_help& option : command.options) {
    if (option.names.back() == name) return &option;
  }
  return nullptr;
}

TEST(CommandHelp, HoldsTheShownCommandsOnly) {
  const command_help help = help_of(small_tool().app);
  EXPECT_EQ(help.name, "tool");
  EXPECT_EQ(help.text, "Does things.");
  ASSERT_EQ(help.commands.size(), 1u);
  EXPECT_EQ(help.commands[0].name, "tool shown");
  EXPECT_EQ(help.commands[0].text, "Do a thing");
}

TEST(CommandHelp, TellsOfOptionsAndOperands) {
  const command_help help = help_of(small_tool().app).commands[0];
  const option_help* files = option_named(help, "FILES");
  ASSERT_TRUE(files);
  EXPECT_TRUE(files->is_operand && files->is_required && files->is_repeated && !files->is_flag);
  EXPECT_EQ(files->value, "FILE");
  const option_help* quiet = option_named(help, "--quiet");
  ASSERT_TRUE(quiet);
  EXPECT_EQ(quiet->names, (strings{"-q", "--quiet"}));
  EXPECT_TRUE(quiet->is_flag && !quiet->is_operand && !quiet->is_required);
  EXPECT_EQ(quiet->value, "");
  EXPECT_EQ(quiet->text, "Say nothing");
  EXPECT_FALSE(option_named(help, "--secret"));
}

TEST(CommandHelp, TellsWhatAnOptionTakes) {
  const command_help help = help_of(small_tool().app).commands[0];
  const option_help* side = option_named(help, "--side");
  ASSERT_TRUE(side);
  EXPECT_EQ(side->value, "MM");
  EXPECT_EQ(side->allowed, "1 to 20.5");
  EXPECT_EQ(side->standard, "2.5");
  EXPECT_TRUE(side->choices.empty());
  const option_help* kind = option_named(help, "--kind");
  ASSERT_TRUE(kind);
  EXPECT_EQ(kind->value, "NAME");
  EXPECT_EQ(kind->choices, (strings{"a", "b"}));
  EXPECT_EQ(kind->allowed, "a or b");
}

TEST(CommandHelp, TakesTheFooterApartAtItsTitles) {
  const std::vector<help_section> sections = sections_of(
      "One thing:\nthis is no title, since it has three words and more:\n\nand text\n\n"
      "Exit codes:\n  0  good\n\nExamples:\n\n  x\n\n  y\n\n");
  ASSERT_EQ(sections.size(), 3u);
  EXPECT_EQ(sections[0].title, "One thing");
  EXPECT_EQ(sections[0].lines,
            (strings{"this is no title, since it has three words and more:", "", "and text"}));
  EXPECT_EQ(sections[1].title, "Exit codes");
  EXPECT_EQ(sections[1].lines, strings{"  0  good"});
  EXPECT_EQ(sections[2].title, "Examples");
  EXPECT_EQ(sections[2].lines, (strings{"  x", "", "  y"}));
}

TEST(CommandHelp, LeavesWhatStandsFirstUntitled) {
  const std::vector<help_section> sections = sections_of("Some text\nof two lines:\n  x");
  ASSERT_EQ(sections.size(), 1u);
  EXPECT_EQ(sections[0].title, "");
  EXPECT_EQ(sections[0].lines, (strings{"Some text", "of two lines:", "  x"}));
  EXPECT_TRUE(sections_of("").empty());
}

TEST(CommandHelp, VisitsACommandAheadOfThoseBelow) {
  strings names;
  visit_commands({"a",
                  "",
                  {},
                  {},
                  {{"a b", "", {}, {}, {{"a b c", "", {}, {}, {}}}}, {"a d", "", {}, {}, {}}}},
                 [&](const command_help& command) { names.push_back(command.name); });
  EXPECT_EQ(names, (strings{"a", "a b", "a b c", "a d"}));
}

}  // namespace
}  // namespace ocpan

#include <algorithm>
#include <map>

#include <gtest/gtest.h>

#include "tools/commands.h"
#include "tools/manual/command_help.h"

namespace ocpan {
namespace {

command_help whole_tool() {
  CLI::App app;
  int exit_code = 0;
  add_commands(app, exit_code);
  return help_of(app);
}

const help_section* section_of(const command_help& command, const std::string& title) {
  const auto found =
      std::find_if(command.sections.begin(), command.sections.end(),
                   [&](const help_section& section) { return section.title == title; });
  return found == command.sections.end() ? nullptr : &*found;
}

// What an option means whatever the command: its text up to a semicolon.
std::string meaning_of(const option_help& option) {
  return option.text.substr(0, option.text.find(';'));
}

int count_commands(const command_help& tool) {
  int count = 0;
  visit_commands(tool, [&](const command_help&) { ++count; });
  return count;
}

TEST(HelpOfEveryCommand, SaysWhatTheCommandDoes) {
  const command_help tool = whole_tool();
  EXPECT_GE(count_commands(tool), 18);
  visit_commands(tool, [](const command_help& command) {
    EXPECT_FALSE(command.text.empty()) << command.name;
    EXPECT_EQ(command.text.find('\n'), std::string::npos) << command.name;
  });
}

TEST(HelpOfEveryCommand, HasExamplesOfIt) {
  visit_commands(whole_tool(), [](const command_help& command) {
    const help_section* examples = section_of(command, "Examples");
    ASSERT_TRUE(examples) << command.name;
    const bool any = std::any_of(
        examples->lines.begin(), examples->lines.end(),
        [&](const std::string& line) { return line.rfind("  " + command.name, 0) == 0; });
    EXPECT_TRUE(any) << command.name;
  });
}

TEST(HelpOfEveryCommand, TellsItsExitCodesInOrder) {
  visit_commands(whole_tool(), [](const command_help& command) {
    const help_section* codes = section_of(command, "Exit codes");
    ASSERT_TRUE(codes) << command.name;
    int last = -1;
    bool has_usage = false;
    for (const std::string& line : codes->lines) {
      if (line.rfind("   ", 0) == 0) continue;  // goes on from the line before
      const int code = std::stoi(line);
      EXPECT_GT(code, last) << command.name << ": " << line;
      last = code;
      has_usage = has_usage || code == 64;
    }
    EXPECT_TRUE(has_usage) << command.name;
  });
}

TEST(HelpOfEveryCommand, GivesOptionsOfOneNameOneMeaning) {
  std::map<std::string, std::pair<std::string, option_help>> known;
  int shared = 0;
  visit_commands(whole_tool(), [&](const command_help& command) {
    for (const option_help& option : command.options) {
      EXPECT_FALSE(option.text.empty()) << command.name << ' ' << option.names.back();
      if (option.is_operand) continue;
      const auto [found, is_new] = known.try_emplace(option.names.back(), command.name, option);
      if (is_new) continue;
      ++shared;
      const auto& [other, first] = found->second;
      const std::string where = other + " and " + command.name + ", " + option.names.back();
      EXPECT_EQ(option.names, first.names) << where;
      EXPECT_EQ(option.value, first.value) << where;
      EXPECT_EQ(meaning_of(option), meaning_of(first)) << where;
    }
  });
  EXPECT_GE(shared, 25);  // --help of each command among them
}

TEST(HelpOfEveryCommand, TellsWhatAValueIs) {
  visit_commands(whole_tool(), [](const command_help& command) {
    for (const option_help& option : command.options) {
      if (option.is_operand || option.is_flag) continue;
      EXPECT_FALSE(option.value.empty()) << command.name << ' ' << option.names.back();
      EXPECT_TRUE(std::all_of(option.value.begin(), option.value.end(),
                              [](char c) { return c >= 'A' && c <= 'Z'; }))
          << command.name << ' ' << option.names.back() << ' ' << option.value;
    }
  });
}

}  // namespace
}  // namespace ocpan

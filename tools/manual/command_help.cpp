#include "tools/manual/command_help.h"

#include <algorithm>
#include <sstream>

namespace ocpan {
namespace {

// "{129,253}" taken apart; empty if it is no such list.
std::vector<std::string> listed_words(const std::string& check) {
  if (check.size() < 2 || check.front() != '{' || check.back() != '}') return {};
  std::vector<std::string> words;
  std::istringstream list(check.substr(1, check.size() - 2));
  for (std::string word; std::getline(list, word, ',');) words.push_back(word);
  return words;
}

// A check of values in words: "FLOAT in [0.2 - 20]" is "0.2 to 20".
std::string in_words(const std::string& check) {
  const std::size_t open = check.find("in [");
  const std::size_t to = check.find(" - ");
  if (open != std::string::npos && to != std::string::npos && check.back() == ']') {
    return check.substr(open + 4, to - open - 4) + " to " +
           check.substr(to + 3, check.size() - to - 4);
  }
  return check == "POSITIVE" ? "above 0" : check;
}

std::string joined_choices(const std::vector<std::string>& choices) {
  std::string text;
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (i > 0) text += i + 1 == choices.size() ? " or " : ", ";
    text += choices[i];
  }
  return text;
}

option_help help_of_option(const CLI::Option& option) {
  option_help help;
  help.is_operand = option.get_positional();
  if (help.is_operand) {
    help.names = {option.get_name(true)};
  } else {
    for (const std::string& name : option.get_snames()) help.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) help.names.push_back("--" + name);
  }
  const std::string type = option.get_type_name();
  const std::size_t colon = type.find(':');
  help.is_flag = option.get_items_expected_max() == 0;
  if (!help.is_flag) help.value = type.substr(0, colon);
  if (colon != std::string::npos) {
    const std::string check = type.substr(colon + 1);
    help.choices = listed_words(check);
    help.allowed = help.choices.empty() ? in_words(check) : joined_choices(help.choices);
  }
  help.standard = option.get_default_str();
  help.text = option.get_description();
  help.is_required = option.get_required();
  help.is_repeated = option.get_items_expected_max() > 1;
  return help;
}

bool is_title(const std::string& line) {
  return !line.empty() && line.front() != ' ' && line.back() == ':' &&
         std::count(line.begin(), line.end(), ' ') <= 1;
}

}  // namespace

std::vector<help_section> sections_of(const std::string& footer) {
  std::vector<help_section> sections;
  std::istringstream lines(footer);
  bool after_gap = true;
  for (std::string line; std::getline(lines, line); after_gap = line.empty()) {
    if (after_gap && is_title(line)) {
      sections.push_back({line.substr(0, line.size() - 1), {}});
    } else if (!line.empty() || (!sections.empty() && !sections.back().lines.empty())) {
      if (sections.empty()) sections.emplace_back();
      sections.back().lines.push_back(line);
    }
  }
  for (help_section& section : sections) {
    while (!section.lines.empty() && section.lines.back().empty()) section.lines.pop_back();
  }
  return sections;
}

command_help help_of(const CLI::App& command, const std::string& names_above) {
  command_help help;
  help.name = (names_above.empty() ? "" : names_above + " ") + command.get_name();
  help.text = command.get_description();
  help.sections = sections_of(command.get_footer());
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_group().empty()) help.options.push_back(help_of_option(*option));
  }
  const auto is_shown = [](const CLI::App* below) { return !below->get_group().empty(); };
  for (const CLI::App* below : command.get_subcommands(is_shown)) {
    help.commands.push_back(help_of(*below, help.name));
  }
  return help;
}

void visit_commands(const command_help& command,
                    const std::function<void(const command_help&)>& visit) {
  visit(command);
  for (const command_help& below : command.commands) visit_commands(below, visit);
}

}  // namespace ocpan

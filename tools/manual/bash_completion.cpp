#include "tools/manual/bash_completion.h"

#include <algorithm>
#include <set>
#include <vector>

namespace ocpan {
namespace {

// What the words of a command line are completed with. In the script the function is named
// behind the tool, and CASES stands for what follows from the tool's help.
constexpr const char* head =
    R"(# Completes the commands, options and file names of TOOL in bash.
_TOOL() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=TOOL words= operand= i
  # bash parts --option=value at the sign.
  if [[ $current == = ]]; then
    current=
  elif [[ $previous == = && COMP_CWORD -gt 1 ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for ((i = 1; i < COMP_CWORD; i++)); do
    case "$command ${COMP_WORDS[i]}" in
)";

constexpr const char* tail =
    R"(  esac
  COMPREPLY=()
  case $operand in
  words) ;;
  folder | file)
    compopt -o filenames 2>/dev/null
    if [[ $operand == folder ]]; then
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
    else
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
    ;;
  esac
  if [[ $operand == words || $current == -* || -z $operand ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  fi
}
complete -F _TOOL TOOL
)";

bool is_file(const option_help& option) {
  return option.value == "FILE" || option.value == "PREFIX";
}
bool is_folder(const option_help& option) { return option.value == "FOLDER"; }

// How what an option or operand takes is completed: "file", "folder", "words", or "none".
std::string kind_of(const option_help& option) {
  if (!option.choices.empty()) return "words";
  if (is_folder(option)) return "folder";
  return is_file(option) ? "file" : "none";
}

std::string joined(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

// The case of a command: what may follow it, unless an option waits for its value.
std::string command_case(const command_help& command) {
  std::vector<std::string> words;
  for (const command_help& below : command.commands) {
    words.push_back(below.name.substr(command.name.size() + 1));
  }
  std::string waiting;
  bool takes_files = false;
  bool takes_folders = false;
  for (const option_help& option : command.options) {
    if (option.is_operand) {
      takes_files = takes_files || is_file(option);
      takes_folders = takes_folders || is_folder(option);
      continue;
    }
    words.insert(words.end(), option.names.begin(), option.names.end());
    if (option.is_flag) continue;
    waiting += "    " + joined(option.names, " | ") + ") operand=" + kind_of(option);
    if (!option.choices.empty()) waiting += " words='" + joined(option.choices, " ") + "'";
    waiting += " ;;\n";
  }
  std::string text = "  '" + command.name + "')\n    words='" + joined(words, " ") + "'\n";
  if (takes_files || takes_folders) {
    text += std::string("    operand=") + (takes_files ? "file" : "folder") + "\n";
  }
  if (!waiting.empty()) text += "    case $previous in\n" + waiting + "    esac\n";
  return text + "    ;;\n";
}

std::string with_tool_name(std::string text, const std::string& name) {
  constexpr std::string_view placeholder = "TOOL";
  for (std::size_t at = 0; (at = text.find(placeholder, at)) != std::string::npos;) {
    text.replace(at, placeholder.size(), name);
    at += name.size();
  }
  return text;
}

}  // namespace

std::string bash_completion(const command_help& tool) {
  std::vector<std::string> names;
  std::string cases;
  visit_commands(tool, [&](const command_help& command) {
    if (command.name != tool.name) names.push_back("'" + command.name + "'");
    cases += command_case(command);
  });
  return with_tool_name(head, tool.name) + "    " + joined(names, " | ") +
         ") command+=\" ${COMP_WORDS[i]}\" ;;\n    esac\n  done\n  case $command in\n" + cases +
         with_tool_name(tail, tool.name);
}

}  // namespace ocpan

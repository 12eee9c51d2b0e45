#include "tools/manual/man_page.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <string_view>

namespace ocpan {
namespace {

std::string upper_case(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::string bold(const std::string& text) { return "\\fB" + roff_text(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + roff_text(text) + "\\fR"; }

// The reference to a page, as the formatter prints it: "oc_pan-cal(1)", the name bold.
std::string reference(const std::string& command_name) {
  return "\\fB" + roff_text(page_name(command_name)) + "\\fR(1)";
}

// What an option takes, behind its name.
std::string value_of(const option_help& option) {
  return option.is_flag ? "" : " " + italic(option.value.empty() ? "VALUE" : option.value);
}

std::string synopsis(const command_help& command) {
  std::string line = bold(command.name);
  bool any_left = false;
  for (const option_help& option : command.options) {
    if (option.is_operand) continue;
    if (option.is_required) {
      line += " " + bold(option.names.back()) + value_of(option);
    } else {
      any_left = true;
    }
  }
  if (any_left) line += " [" + italic("OPTIONS") + "]";
  for (const option_help& option : command.options) {
    if (!option.is_operand) continue;
    const std::string name = italic(option.names.front()) + (option.is_repeated ? "..." : "");
    line += option.is_required ? " " + name : " [" + name + "]";
  }
  if (!command.commands.empty()) line += " " + italic("COMMAND") + " ...";
  return line;
}

// Running text and indented examples. An indented line keeps its layout.
std::string body(const std::vector<std::string>& lines) {
  std::string page;
  bool in_example = false;
  for (const std::string& line : lines) {
    const bool indented = !line.empty() && line.front() == ' ';
    if (!line.empty() && indented != in_example) {
      page += indented ? (page.empty() ? ".EX\n" : ".PP\n.EX\n") : ".EE\n.PP\n";
      in_example = indented;
    }
    if (!line.empty()) {
      page += roff_text(line) + "\n";
    } else if (in_example) {
      page += "\\&\n";
    } else {
      page += ".PP\n";
    }
  }
  return in_example ? page + ".EE\n" : page;
}

// A list of "  0    done" lines; what is indented more deeply goes on from the line before.
std::string code_list(const std::vector<std::string>& lines) {
  std::string page;
  for (const std::string& line : lines) {
    const std::size_t start = line.find_first_not_of(' ');
    if (start == std::string::npos) continue;
    const std::size_t end = line.find_first_not_of("0123456789", start);
    if (start == 2 && end != start && end != std::string::npos) {
      page += ".TP\n" + bold(line.substr(start, end - start)) + "\n";
      page += roff_text(line.substr(line.find_first_not_of(' ', end))) + "\n";
    } else {
      page += roff_text(line.substr(start)) + "\n";
    }
  }
  return page;
}

std::string option_entry(const option_help& option) {
  std::string entry = ".TP\n";
  if (option.is_operand) {
    entry += italic(option.names.front()) + (option.is_repeated ? "..." : "");
  } else {
    for (const std::string& name : option.names) {
      entry += (name == option.names.front() ? "" : ", ") + bold(name);
    }
    entry += value_of(option);
  }
  entry += "\n" + roff_text(option.text);
  if (!option.allowed.empty()) entry += " (" + roff_text(option.allowed) + ")";
  if (!option.standard.empty()) entry += " [" + roff_text(option.standard) + "]";
  return entry + "\n";
}

std::string option_list(const command_help& command, bool operands) {
  std::string list;
  for (const option_help& option : command.options) {
    if (option.is_operand == operands) list += option_entry(option);
  }
  return list;
}

std::string section(const help_section& part) {
  if (part.title == "Exit codes") return ".SH EXIT STATUS\n" + code_list(part.lines);
  const std::string title = part.title.empty() ? "" : ".SH " + roff_text(upper_case(part.title));
  return title + "\n" + body(part.lines);
}

// Whether a text speaks of a command by its whole name.
bool names_command(const std::string& text, const std::string& name) {
  for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + 1)) {
    const std::size_t behind = at + name.size();
    if (behind == text.size() ||
        (std::isalnum(static_cast<unsigned char>(text[behind])) == 0 && text[behind] != '-')) {
      return true;
    }
  }
  return false;
}

// The commands above and those that the help speaks of.
std::set<std::string> related_commands(const command_help& command, const command_help& tool) {
  std::string help = command.text;
  for (const help_section& part : command.sections) {
    for (const std::string& line : part.lines) help += "\n" + line;
  }
  std::set<std::string> names;
  visit_commands(tool, [&](const command_help& other) {
    const bool is_above = command.name.rfind(other.name + " ", 0) == 0;
    const bool is_spoken_of = other.name != tool.name && names_command(help, other.name);
    if (other.name != command.name && (is_above || is_spoken_of)) {
      names.insert(other.name);
    }
  });
  return names;
}

}  // namespace

std::string page_name(const std::string& command_name) {
  std::string name = command_name;
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

std::string roff_text(const std::string& text) {
  std::string roff;
  bool at_line_start = true;
  for (const char c : text) {
    if (at_line_start && c == '.') roff += "\\&";
    at_line_start = c == '\n';
    switch (c) {
      case '\\':
        roff += "\\(rs";
        break;
      case '-':
        roff += "\\-";
        break;
      case '\'':
        roff += "\\(aq";
        break;
      case '"':
        roff += "\\(dq";
        break;
      case '`':
        roff += "\\(ga";
        break;
      case '^':
        roff += "\\(ha";
        break;
      case '~':
        roff += "\\(ti";
        break;
      default:
        roff += c;
    }
  }
  return roff;
}

std::string man_page(const command_help& command, const command_help& tool,
                     const std::string& version) {
  const std::string name = roff_text(page_name(command.name));
  std::string text = roff_text(command.text);
  if (text.ends_with('.')) text.pop_back();
  std::string page = ".TH " + upper_case(name) + " 1 \"\" \"" + roff_text(version) + "\" \"" +
                     roff_text(tool.name) + " manual\"\n";
  page += ".SH NAME\n" + name + " \\- " + text + "\n";
  page += ".SH SYNOPSIS\n" + synopsis(command) + "\n";
  page += ".SH DESCRIPTION\n" + text + ".\n";
  const auto is_first = [](const help_section& part) { return part.title.empty(); };
  for (const help_section& part : command.sections) {
    if (is_first(part)) page += ".PP" + section(part);
  }
  if (!command.commands.empty()) page += ".SH COMMANDS\n";
  for (const command_help& below : command.commands) {
    page += ".TP\n" + reference(below.name) + "\n" + roff_text(below.text) + "\n";
  }
  page += ".SH OPTIONS\n" + option_list(command, true) + option_list(command, false);
  for (const help_section& part : command.sections) {
    if (!is_first(part)) page += section(part);
  }
  const std::set<std::string> related = related_commands(command, tool);
  if (!related.empty()) page += ".SH SEE ALSO\n";
  for (const std::string& other : related) {
    page += reference(other) + (other == *related.rbegin() ? "\n" : ",\n");
  }
  return page;
}

}  // namespace ocpan

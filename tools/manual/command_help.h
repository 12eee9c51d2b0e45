#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace ocpan {

// An option or an operand of a command, as its help tells.
struct option_help {
  std::vector<std::string> names;    // "-q", "--quiet"; an operand's own name
  std::string value;                 // what it takes, as "FILE"; empty for a flag and an operand
                                     // that tells nothing more
  std::string allowed;               // in words, as "0.2 to 20"; empty if nothing is said
  std::vector<std::string> choices;  // the words allowed, if they are listed
  std::string standard;              // what is taken if it is left out; empty if nothing is said
  std::string text;
  bool is_operand = false;
  bool is_flag = false;  // takes no value
  bool is_required = false;
  bool is_repeated = false;
};

// A titled part of what stands behind the options in a help.
struct help_section {
  std::string title;               // without its colon; empty for what stands first
  std::vector<std::string> lines;  // no empty ones at the ends
};

// A command and those below it.
struct command_help {
  std::string name;  // with those above it: "oc_pan simulate boards"
  std::string text;  // what it does, in one line
  std::vector<option_help> options;
  std::vector<help_section> sections;
  std::vector<command_help> commands;
};

// Reads the help of the tool, or of one of its commands with the names above it. Commands that
// no help shows are left out.
[[nodiscard]] command_help help_of(const CLI::App& command, const std::string& names_above = "");

// Takes a footer apart. A title is a line of one or two words with a colon at its end, at the
// beginning or behind an empty line.
[[nodiscard]] std::vector<help_section> sections_of(const std::string& footer);

// Calls `visit` for a command and all below it.
void visit_commands(const command_help& command,
                    const std::function<void(const command_help&)>& visit);

}  // namespace ocpan

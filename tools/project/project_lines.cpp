#include "tools/project/project_lines.h"

#include <algorithm>
#include <sstream>

#include "platform/text_file.h"

namespace ocpan {
namespace {

constexpr std::string_view blanks = " \t\v\f\r";

bool is_blank(char letter) { return blanks.find(letter) != std::string_view::npos; }

std::size_t key_length(std::string_view token) {
  const std::string_view start = token.substr(0, 3);
  return start == "TrX" || start == "TrY" || start == "TrZ" ? 3 : 1;
}

// The words of a line; blanks between quotation marks belong to a word.
std::vector<std::string> words_of(std::string_view text) {
  std::vector<std::string> words(1);
  bool quoted = false;
  for (const char letter : text) {
    if (letter == '"') quoted = !quoted;
    if (quoted || !is_blank(letter)) {
      words.back() += letter;
    } else if (!words.back().empty()) {
      words.emplace_back();
    }
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

bool holds_parameter(const std::string& value, std::string_view letters) {
  std::istringstream words(value);
  std::string word;
  words >> word;  // stands behind the key and is no parameter of its own
  while (words >> word) {
    if (letters.find(word[0]) != std::string_view::npos) return true;
  }
  return false;
}

}  // namespace

std::vector<project_line> read_project_lines(std::istream& in) {
  std::vector<project_line> lines;
  std::string text;
  while (read_text_line(in, text)) {
    project_line& line = lines.emplace_back();
    line.number = lines.size();
    line.text = text;
    const std::vector<std::string> words = words_of(text);
    if (words.empty()) continue;
    line.kind = words[0];
    for (std::size_t i = 1; i < words.size(); ++i) {
      const std::size_t length = key_length(words[i]);
      line.tokens.push_back({words[i].substr(0, length), words[i].substr(length)});
    }
  }
  return lines;
}

const project_token* find_token(const project_line& line, std::string_view key) {
  const auto found = std::find_if(line.tokens.rbegin(), line.tokens.rend(),
                                  [&](const project_token& token) { return token.key == key; });
  return found == line.tokens.rend() ? nullptr : &*found;
}

void set_token(project_line& line, std::string_view key, const std::string& value) {
  bool found = false;
  for (project_token& token : line.tokens) {
    if (token.key != key) continue;
    token.value = value;
    found = true;
  }
  if (!found) line.tokens.push_back({std::string(key), value});
}

std::string joined(const project_line& line) {
  std::string text = line.kind;
  for (const project_token& token : line.tokens) text += " " + token.key + token.value;
  return text;
}

void close_quoted_blanks(project_line& line, std::string_view letters,
                         std::vector<project_finding>& findings) {
  for (project_token& token : line.tokens) {
    if (!holds_parameter(token.value, letters)) continue;
    const std::string before = token.value;
    std::replace_if(token.value.begin(), token.value.end(), is_blank, '_');
    findings.push_back({line.number, 0,
                        token.key + before +
                            " holds blanks and would be read as parameters; it is "
                            "written as " +
                            token.key + token.value});
  }
}

}  // namespace ocpan

#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace ocpan {

// A parameter of a line: a key and its value side by side, as in "v87.5" or "TrX0".
struct project_token {
  std::string key;
  std::string value;  // a quoted text keeps its quotes and its blanks
};

// A line of a panorama project file.
struct project_line {
  std::size_t number = 0;  // from 1
  std::string text;        // as it was read
  std::string kind;        // its first word; "p" is the panorama, "i" a picture
  std::vector<project_token> tokens;
};

// What was noticed about a line.
struct project_finding {
  std::size_t line = 0;  // 0 for the file as a whole
  int code = 0;          // the exported code that it ends with, 0 for a warning
  std::string text;
};

// Takes a project file apart. Blanks between quotation marks don't part tokens.
std::vector<project_line> read_project_lines(std::istream& in);

// The last token of that key, null if there is none.
const project_token* find_token(const project_line& line, std::string_view key);

// Gives the token of that key a value; it is appended where there is none.
void set_token(project_line& line, std::string_view key, const std::string& value);

// The line as a text, made from its kind and its tokens.
std::string joined(const project_line& line);

// Puts "_" for the blanks of quoted texts wherever a word of them would be read as a
// parameter by a reader that knows no quotation marks. Each is a warning.
//
//   letters   the keys that such a reader knows on this line
void close_quoted_blanks(project_line& line, std::string_view letters,
                         std::vector<project_finding>& findings);

}  // namespace ocpan

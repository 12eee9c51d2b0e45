#include "tools/calibration_check.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>

#include "platform/text_file.h"

namespace ocpan {
namespace {

bool spells_no_number(std::string_view value) {
  if (!value.empty() && (value[0] == '+' || value[0] == '-')) value.remove_prefix(1);
  std::string start(value.substr(0, 3));
  std::transform(start.begin(), start.end(), start.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return start == "nan" || start == "inf";
}

// The values of a token, with commas between. Of a project file's keys only those that hold
// numbers count: an image's name may well begin with "nan".
std::string_view values_of(std::string_view token, bool project_file) {
  if (!project_file) {
    const std::size_t colon = token.find(':');
    return colon == std::string_view::npos ? std::string_view() : token.substr(colon + 1);
  }
  constexpr std::string_view number_keys = "whfvyprabcdegtC";
  return number_keys.find(token[0]) == std::string_view::npos ? std::string_view()
                                                              : token.substr(1);
}

bool holds_no_number(std::string_view values) {
  while (true) {
    const std::size_t comma = values.find(',');
    if (spells_no_number(values.substr(0, comma))) return true;
    if (comma == std::string_view::npos) return false;
    values.remove_prefix(comma + 1);
  }
}

}  // namespace

std::string number_that_is_none(const std::string& path, bool project_file) {
  std::ifstream in = open_input(path);
  std::string line, token;
  for (int number = 1; read_text_line(in, line); ++number) {
    std::istringstream tokens(line);
    if (project_file && (!(tokens >> token) || (token != "p" && token != "i"))) continue;
    while (tokens >> token) {
      if (holds_no_number(values_of(token, project_file))) {
        return token + " in line " + std::to_string(number);
      }
    }
  }
  return {};
}

}  // namespace ocpan

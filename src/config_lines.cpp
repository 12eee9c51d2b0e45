#include "src/config_lines.h"

#include <algorithm>
#include <cstdlib>

#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

constexpr std::size_t npos = std::string_view::npos;

}  // namespace

line_key next_key(std::string_view line, std::size_t position) {
  position = std::min(position, line.size());
  const std::size_t colon = line.find(':', position);
  return {line.substr(position, colon == npos ? npos : colon - position), colon};
}

std::optional<line_value> value_behind(std::string_view line, std::size_t colon) {
  if (colon + 1 == line.size()) return std::nullopt;
  std::size_t end = line.size();
  const std::size_t next_colon = line.find(':', colon + 1);
  if (next_colon != npos) {
    const std::size_t comma = line.substr(colon + 1, next_colon - colon - 1).rfind(',');
    if (comma == npos) return std::nullopt;
    end = colon + 1 + comma;
  }
  const std::size_t start = std::min(colon + 2, end);  // a comma may follow directly
  return line_value{line.substr(start, end - start), end + 1};
}

int badly_formed(std::string_view text) {
  print_line("Badly formed line: ", text);
  return code::content_malformed;
}

int quoted_value(std::string_view& value, std::string_view text) {
  const std::size_t first = text.find('\'');
  if (first == npos) return badly_formed(text);
  const std::size_t second = text.find('\'', first + 1);
  if (second == npos) return badly_formed(text);
  value = text.substr(first + 1, second - first - 1);
  return code::success;
}

std::optional<std::vector<std::string_view>> quoted_entries(std::string_view text) {
  const std::size_t first = text.find('\'');
  if (first == npos) return std::nullopt;
  std::vector<std::string_view> entries;
  for (std::size_t start = first + 1; start < text.size();) {
    const std::size_t end = std::min(text.find('\'', start + 1), text.size());
    entries.push_back(text.substr(start, end - start));
    start = end + 4;  // a quote, a comma, a blank and a quote
  }
  return entries;
}

int int_of(std::string_view text) { return std::atoi(std::string(text).c_str()); }

float float_of(std::string_view text) {
  return static_cast<float>(std::atof(std::string(text).c_str()));
}

std::string normalise_path(std::string_view path) {
  std::string normalised(path);
  std::replace(normalised.begin(), normalised.end(), '/', '\\');
  return normalised;
}

std::string join_path(const std::string& base, const std::string& subdir) {
  return !subdir.empty() && subdir.front() == '\\' ? subdir : base + subdir;
}

}  // namespace ocpan

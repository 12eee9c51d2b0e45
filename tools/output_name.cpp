#include "tools/output_name.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "platform/text_file.h"

namespace ocpan {
namespace {

std::optional<std::string> quoted_value(std::string_view text) {
  const std::size_t first = text.find('\'');
  if (first == std::string_view::npos) return std::nullopt;
  const std::size_t second = text.find('\'', first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  return std::string(text.substr(first + 1, second - first - 1));
}

}  // namespace

output_name find_output_name(std::istream& configuration) {
  output_name name;
  std::string line;
  while (read_text_line(configuration, line)) {
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos) continue;
    const std::string key = line.substr(0, colon);
    if (key == "camera_info") {
      name.known = true;
      return name;
    }
    if (key != "base_directory" && key != "output_filename") return {};
    const std::optional<std::string> value = quoted_value(std::string_view(line).substr(colon));
    if (!value) return {};
    // The library looks for a further key from here on, and knows none.
    const std::size_t behind_value = key.size() + 1 + value->size();
    if (line.find(':', behind_value) != std::string::npos) return {};
    if (key == "output_filename") {
      name.text = *value;
      std::replace(name.text.begin(), name.text.end(), '/', '\\');
    }
  }
  return {};
}

}  // namespace ocpan

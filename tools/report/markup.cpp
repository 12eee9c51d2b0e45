#include "tools/report/markup.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace ocpan {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD

// How many bytes the character at the start takes, 0 if it is no UTF-8 or XML forbids it.
std::size_t character_length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return first >= 0x20 || first == '\t' || first == '\n' || first == '\r';
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  std::uint32_t character = first & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    character = character << 6 | (byte(i) & 0x3Fu);
  }
  constexpr std::array<std::uint32_t, 5> smallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool allowed = character >= smallest[length] && character <= 0x10FFFF &&
                       !(character >= 0xD800 && character <= 0xDFFF) && character != 0xFFFE &&
                       character != 0xFFFF;
  return allowed ? length : 0;
}

std::string_view entity_of(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    const std::string_view entity = entity_of(text[0]);
    out += length == 0 ? replacement : !entity.empty() ? entity : text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return out;
}

std::string fixed(double value, int decimals) {
  if (!std::isfinite(value)) return "none";
  std::array<char, 400> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::fixed, decimals);
  return {digits.data(), end.ptr};
}

std::string number(double value, int decimals) {
  std::string text = fixed(value, decimals);
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

std::string measure(double value, int digits) {
  if (!std::isfinite(value) || value == 0) return number(value);
  const int leading = static_cast<int>(std::floor(std::log10(std::abs(value))));
  return fixed(value, std::clamp(digits - 1 - leading, 0, 9));
}

std::string measure_within(double value, double deviation) {
  if (!std::isfinite(deviation) || !(deviation > 0)) return measure(value, 2);
  const int leading = static_cast<int>(std::floor(std::log10(deviation)));
  const int decimals = std::clamp(1 - leading, 0, 9);
  return joined(fixed(value, decimals), " \u00b1 ", fixed(deviation, decimals));
}

}  // namespace ocpan

#include "tools/check/tame_findings.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <utility>

#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr std::size_t most_findings = 20;
constexpr std::size_t most_bytes = 300;  // of a text

unsigned char byte_of(char letter) { return static_cast<unsigned char>(letter); }

bool is_control(char letter) { return byte_of(letter) < 0x20 || byte_of(letter) == 0x7F; }

// The bytes of the letter that begins here; 0 if it is no printable UTF-8.
std::size_t letter_length(std::string_view text) {
  const unsigned char first = byte_of(text.front());
  if (first < 0x80) return is_control(text.front()) ? 0 : 1;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte_of(text[k]) & 0xC0) != 0x80) return 0;
  }
  const bool further_control = first == 0xC2 && byte_of(text[1]) < 0xA0;
  return further_control ? 0 : length;
}

// Line and column of "rig.txt:12:5"; the end of all for a place of no line.
std::pair<std::size_t, std::size_t> place_in(const std::string& where, const std::string& file) {
  constexpr std::size_t last = std::numeric_limits<std::size_t>::max();
  std::pair<std::size_t, std::size_t> place{last, last};
  if (where.size() <= file.size() || !where.starts_with(file)) return place;
  const char* const end = where.data() + where.size();
  const auto line = std::from_chars(where.data() + file.size() + 1, end, place.first);
  if (line.ptr != end) std::from_chars(line.ptr + 1, end, place.second);
  return place;
}

}  // namespace

std::string printable(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string shown;
  while (!text.empty()) {
    if (shown.size() > most_bytes) return shown + " ...";
    const std::size_t length = letter_length(text);
    if (length > 0) {
      shown += text.substr(0, length);
    } else {
      const unsigned char byte = byte_of(text.front());
      shown += {'\\', 'x', digits[byte / 16], digits[byte % 16]};
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return shown;
}

bool looks_like_text(std::istream& in) {
  char letter = 0;
  while (in.get(letter)) {
    const bool blank = letter == '\t' || letter == '\n' || letter == '\r' || letter == '\f';
    if (is_control(letter) && !blank) return false;
  }
  return true;
}

std::vector<finding> tame_findings(std::vector<finding> found, const std::string& configuration) {
  std::stable_sort(found.begin(), found.end(), [&](const finding& a, const finding& b) {
    return place_in(a.where, configuration) < place_in(b.where, configuration);
  });
  for (finding& each : found) {
    each.what = printable(each.what);
    each.mend = printable(each.mend);
  }
  if (found.size() <= most_findings) return found;
  const std::size_t left_out = found.size() - most_findings;
  const verdict worst = verdict_of(found);
  std::stable_sort(found.begin(), found.end(), [&](const finding& a, const finding& b) {
    return (a.weight == worst) > (b.weight == worst);
  });
  found.resize(most_findings);
  found.push_back({worst, configuration, words("and ", left_out, " more"),
                   "mend these first, and check again"});
  return found;
}

}  // namespace ocpan

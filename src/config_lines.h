#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ocpan {

// The text of a configuration's lines. All views are into the line. Each function looks
// only at the stretch that it gives back, so that a line is read in time linear in its
// length however many keys it has.

// A key of a line: the text from where the search began up to its ":", blanks and a "-"
// in front of it included.
struct line_key {
  std::string_view text;  // the rest of the line if there is no further ":"
  std::size_t colon;      // index in the line, or npos

  bool contains(std::string_view part) const { return text.find(part) != text.npos; }
};
[[nodiscard]] line_key next_key(std::string_view line, std::size_t position);

// The value behind a key's ":". It begins two characters behind the ":" and ends at the
// last "," ahead of the next ":", or with the line.
struct line_value {
  std::string_view text;
  std::size_t next;  // where the line goes on behind the value
};
// Gives nothing if the ":" ends the line or no "," parts the value from the next key.
[[nodiscard]] std::optional<line_value> value_behind(std::string_view line, std::size_t colon);

// Prints "Badly formed line: " and the text; gives code::content_malformed.
[[nodiscard]] int badly_formed(std::string_view text);

// What lies between the first and the second "'" of a text; without both the result is that
// of badly_formed.
[[nodiscard]] int quoted_value(std::string_view& value, std::string_view text);

// The entries of a list of quoted texts. Every entry but the first is expected three
// characters behind the "'" that ends the one before, and has at least one character.
// Gives nothing if the text has no "'".
[[nodiscard]] std::optional<std::vector<std::string_view>> quoted_entries(std::string_view text);

// The numbers that the C library's atoi and atof read at the start of a text.
[[nodiscard]] int int_of(std::string_view text);
[[nodiscard]] float float_of(std::string_view text);

// The path with each "/" as a backslash.
[[nodiscard]] std::string normalise_path(std::string_view path);

// A subdirectory that begins with a backslash stands for itself, another one behind base.
[[nodiscard]] std::string join_path(const std::string& base, const std::string& subdir);

}  // namespace ocpan

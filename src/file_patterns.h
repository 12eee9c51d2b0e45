#pragma once

#include <string>
#include <vector>

#include "src/set_config.h"

namespace ocpan {

// Appends the names of a folder's entries, unsorted, with ".", ".." and subfolders.
//
//   names   gets the names, without the folder
//   folder  ends in a backslash, or is empty for the working folder
//
// Gives 0, or code::content_malformed with a message when the folder can't be listed.
[[nodiscard]] int list_directory(const std::string& folder, std::vector<std::string>& names);

// Whether a stands ahead of b: character by character without regard to case, non-digits
// ahead of digits, a beginning ahead of what goes on. Not numeric: "10" stands ahead of
// "9". Names that differ in case only give true both ways, so this is no order to sort
// with; sort_names is.
[[nodiscard]] bool filename_less(const std::string& a, const std::string& b);

// Sorts by filename_less; names that differ in case only keep their order.
void sort_names(std::vector<std::string>& names);

// Appends a folder's listing to names and sorts names as a whole. Gives
// code::content_malformed with a message when the folder can't be listed, and when names
// is still empty.
[[nodiscard]] int list_sorted(const std::string& folder, std::vector<std::string>& names);

// Matches a whole name, from its start, against a pattern of a small dialect of its own:
//
//   \d \.      one digit, a full stop
//   .          any one character
//   [0-9]      the same as \d, once in a pattern
//   * +        behind an element other than ".": repeat, as far as the name goes along
//   ^ $        the start and the end of the name
//   ( ) [ ]    refused
//   the rest   itself, with its case
//
// Two things look like mistakes and are wanted. A "*" that fits nothing still takes one
// character of the name. A name that runs on behind a pattern without "$", or ends ahead
// of the pattern, is a failure and not a mismatch.
//
//   matched  false unless the result is 0 and the name fits
//
// Gives 0, code::content_malformed for a fault in the part of the pattern that the name
// reached, or code::logic_failure; each with a message.
[[nodiscard]] int match_pattern(const std::string& pattern, const std::string& name, bool& matched);

// Appends the full paths of the names that fit the pattern, in the order of the names.
//
//   folder     what a path begins with
//   file_list  gets pointers into the pool; must be empty
//
// Gives 0 or the first result of match_pattern that isn't; what was appended stays.
[[nodiscard]] int expand_pattern(const std::string& pattern, const std::string& folder,
                                 const std::vector<std::string>& names,
                                 std::vector<const char*>& file_list, string_pool& pool);

}  // namespace ocpan

#include <algorithm>

#include "src/file_patterns.h"
#include "src/result_codes.h"
#include "tools/boards/printed_aside.h"
#include "tools/check/config_walk.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr std::size_t npos = std::string_view::npos;

std::size_t column_in(const written_key& key, std::string_view part) {
  return key.value_at.column +
         static_cast<std::size_t>(part.data() - std::string_view(key.value).data());
}

key_fault unknown_key(const written_key& key) {
  const auto names = [&](std::string_view part) { return key.key.find(part) != std::string::npos; };
  const std::size_t column = key.place.column;
  if (names("base_directory") || names("output_filename")) {
    return {column, words("\"", key.key, "\" stands among the sets"),
            "put it ahead of camera_info:"};
  }
  if (names("calibration_sets")) {
    return {column, "calibration_sets stands a second time", "take this line out"};
  }
  if (names("width") || names("height") || names("hfov") || names("lens")) {
    return {column, words("\"", key.key, "\" stands among the sets"),
            "put the cameras ahead of calibration_sets:"};
  }
  return {column, words("\"", key.key, "\" is no key of a set"),
          "a set has set_name, board_scale, cameras, subdir, filename_patterns and board_shape; a "
          "comment holds no \":\""};
}

key_fault shape_fault(const written_key& key) {
  const std::string example = "write it as board_shape: [9, 6], in inner corners";
  const std::size_t open = key.value.find('[');
  const std::size_t comma = open == npos ? npos : key.value.find(',', open + 1);
  if (open == npos || comma == npos || key.value.find(']', comma + 2) == npos) {
    return {key.value_at.column, "board_shape lacks a bracket, or the comma between its numbers",
            example};
  }
  if (comma + 1 < key.value.size() && key.value[comma + 1] != ' ') {
    return {key.value_at.column + comma + 1,
            "behind the comma of board_shape a blank is missing, so that the height loses its "
            "first digit",
            "write a comma and one blank"};
  }
  return {key.value_at.column + open + 1, "a side of the board has less than 3 inner corners",
          "count the inner corners, where four squares meet, along each side; " + example};
}

key_fault listing_fault(const written_key& key, const std::string& said) {
  const bool empty = said.find("No files found") != npos;
  const std::string folder = said.substr(said.rfind(empty ? ": " : " opening ") + (empty ? 2 : 9));
  std::string name = folder.substr(0, folder.find('\n'));
  if (!empty && name.ends_with('*')) name.pop_back();
  return {key.place.column, "the folder " + name + (empty ? " is empty" : " can't be opened"),
          "correct base_directory or subdir; folders count from base_directory, and that from the "
          "working folder"};
}

// The names that the pattern of camera k is held against.
std::vector<std::string> names_for(const set_section& sets, std::size_t k) {
  if (!sets.subdir_seen) return sets.base_listing;
  const std::size_t entry = sets.subdirectories.size() == 1 ? 0 : k;
  std::vector<std::string> names;
  if (entry >= sets.subdirectories.size()) return names;
  if (list_sorted(join_path(sets.base_directory, sets.subdirectories[entry]), names) !=
      code::success) {
    names.clear();
  }
  return names;
}

std::string pattern_advice(std::string_view pattern, const std::string& name) {
  if (pattern.find_first_of("()") != npos || pattern.find('[') != npos) {
    return "only one [0-9] may stand in a pattern; write \\d for a digit and leave out ( ) [ ]";
  }
  if (pattern.find(".*") != npos || pattern.find(".+") != npos) {
    return "\".\" can't be repeated here; write out what differs, as in ^cam1_\\d+\\.png$";
  }
  if (!pattern.ends_with('$')) {
    return "the name runs on behind the pattern, which fails here; end the pattern with \"$\"";
  }
  if (name == "." || name == "..") {
    return "the folder's entries \".\" and \"..\" are names too; begin the pattern with a letter "
           "of "
           "the pictures' names instead of a \".\"";
  }
  return "a name that ends ahead of the pattern fails here; move that file away, or make the "
         "pattern differ from its name sooner";
}

key_fault pattern_fault(const config_walk& walk, const written_key& key) {
  const auto entries = quoted_entries(key.value);
  for (std::size_t k = 0; entries && k < entries->size(); ++k) {
    const std::string_view pattern = (*entries)[k];
    std::vector<std::string> names;
    std::string said = printed_aside([&] { names = names_for(walk.sets, k); });
    for (const std::string& name : names) {
      bool matched = false;
      int result = code::success;
      said = printed_aside([&] { result = match_pattern(std::string(pattern), name, matched); });
      if (result == code::success) continue;
      return {column_in(key, pattern),
              words("the pattern '", pattern, "' fails at the name \"", name, "\""),
              pattern_advice(pattern, name)};
    }
  }
  return {key.place.column, "the patterns of a set stand twice", "take one of the lines out"};
}

key_fault patterns_fault(const config_walk& walk, const written_key& key, const std::string& said) {
  const auto says = [&](const char* text) { return said.find(text) != npos; };
  const set_config& set = walk.sets.sets.back();
  const std::string cameras = std::to_string(set.cameras.size());
  if (says("Error(") || says("No files found in: ")) return listing_fault(key, said);
  if (says("subdirectories (")) {
    return {key.place.column,
            "the set has " + cameras + " cameras and " +
                std::to_string(walk.sets.subdirectories.size()) + " entries of subdir",
            "name one folder for all cameras, or one for each, parted by a comma and one blank"};
  }
  const auto entries = quoted_entries(key.value);
  const std::size_t count = entries ? entries->size() : 0;
  const bool more = says("Found more patterns");
  if (!more && !says("Found inconsistent patterns")) return pattern_fault(walk, key);
  if (more && set.cameras.empty()) {
    return {key.place.column, "the patterns stand ahead of the cameras",
            "put cameras, and subdir, ahead of filename_patterns"};
  }
  if (more && trimmed(entries->back()).empty()) {
    return {column_in(key, entries->back()),
            "blanks behind the list of patterns are read as one more pattern",
            "take away the blanks at the end of the line"};
  }
  return {
      key.value_at.column,
      "the library reads " + std::to_string(count) + " patterns here, and " + cameras + " cameras",
      "give each camera a pattern; entries are parted by a comma and exactly one blank, in "
      "cameras too"};
}

}  // namespace

key_fault set_key_fault(const config_walk& walk, const key_stretch& stretch,
                        const std::string& said) {
  const written_key& key = stretch.written;
  const auto says = [&](const char* text) { return said.find(text) != npos; };
  const auto names = [&](const char* part) { return key.key.find(part) != npos; };
  const std::size_t at_value = key.value_at.column;
  if (says("Unrecognised calibration_sets")) return unknown_key(key);
  if (walk.sets.sets.empty()) {
    return {key.place.column, "no set has begun here", "put a \"-\" ahead of each set's first key"};
  }
  if (!stretch.has_value) {
    return {at_value, words("the value of ", key.key, " is missing, or the comma behind it"),
            "write the value behind \": \" and a comma ahead of a next key"};
  }
  if (names("set_name")) {
    return {at_value, "the name lacks its quotes", "write it between two single quotes"};
  }
  if (names("cameras")) {
    return {at_value, "the list of cameras lacks a bracket", "write it as cameras: [1, 2]"};
  }
  if (names("subdir")) {
    return {at_value, "the list of folders lacks its quotes",
            "write it as subdir: ['left', 'right']"};
  }
  if (names("filename_patterns")) {
    if (key.value.find('\'') == npos) {
      return {at_value, "the list of patterns lacks its quotes",
              "write it as filename_patterns: ['^cam1_\\d+\\.png$', '^cam2_\\d+\\.png$']"};
    }
    return patterns_fault(walk, key, said);
  }
  return shape_fault(key);
}

}  // namespace ocpan

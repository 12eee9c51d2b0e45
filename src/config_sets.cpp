#include "src/config_sets.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "src/config_lines.h"
#include "src/console.h"
#include "src/file_patterns.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

constexpr std::size_t npos = std::string_view::npos;

// The label of subdir is not the same where the next set begins and where the file ends.
int check_set(const set_section& section, std::string_view subdir_label) {
  if (section.sets.empty()) return code::success;
  if (section.name_seen && section.cameras_seen && section.patterns_seen && section.shape_seen &&
      section.scale_seen) {
    return code::success;
  }
  print_line("Calibration Struct details incomplete");
  print_line("Details present were: set_name ", section.name_seen, subdir_label,
             section.subdir_seen, ", cameras ", section.cameras_seen, ", filename_patterns ",
             section.patterns_seen, ", board_shape ", section.shape_seen, ", board_scale ",
             section.scale_seen);
  return code::content_malformed;
}

int begin_set(set_section& section) {
  const int result = check_set(section, ", subdir(optional) ");
  if (result != code::success) return result;
  section.subdirectories.clear();
  section.name_seen = section.subdir_seen = section.cameras_seen = false;
  section.patterns_seen = section.shape_seen = section.scale_seen = false;
  section.sets.emplace_back();
  return code::success;
}

int read_set_name(set_section& section, std::string_view value, const std::string&) {
  std::string_view name;
  const int result = quoted_value(name, value);
  if (result != code::success) return result;
  section.pool.emplace_back(name);
  section.sets.back().set_prefix = section.pool.back().c_str();
  section.name_seen = true;
  return code::success;
}

int read_board_scale(set_section& section, std::string_view value, const std::string&) {
  section.sets.back().board_scale = float_of(value);
  section.scale_seen = true;
  return code::success;
}

int read_cameras(set_section& section, std::string_view value, const std::string&) {
  const std::size_t open = value.find('[');
  if (open == npos) {
    print_line("cameras '[' not in expected location in line: ", value);
    return code::content_malformed;
  }
  const std::size_t close = value.find(']', open + 1);
  if (close == npos) {
    print_line("cameras ']' not in expected location in line: ", value);
    return code::content_malformed;
  }
  const std::string_view list = value.substr(0, close);
  for (std::size_t start = open + 1; start < list.size();) {
    const std::size_t end = std::min(list.find(',', start), list.size());
    set_camera camera;
    camera.id = int_of(list.substr(start, end - start));
    section.sets.back().cameras.push_back(camera);
    start = end + 2;  // a comma and one blank
  }
  section.cameras_seen = true;
  return code::success;
}

int read_subdir(set_section& section, std::string_view value, const std::string& line) {
  const auto entries = quoted_entries(value);
  if (!entries) return badly_formed(line);
  for (const std::string_view entry : *entries) {
    section.subdirectories.push_back(normalise_path(entry) + "\\");
  }
  section.subdir_seen = true;
  return code::success;
}

int check_subdirectory_count(std::size_t subdirectories, std::size_t cameras) {
  const bool more = subdirectories > cameras;
  const bool less = subdirectories < cameras && subdirectories != 1;
  if (!more && !less) return code::success;
  print_line("Found ", more ? "more" : "less", " subdirectories (", subdirectories,
             ") than cameras (", cameras, ")");
  return code::content_malformed;
}

// Finds the pictures of camera k of the last set.
int expand_camera(set_section& section, std::size_t k, const std::string& pattern) {
  std::vector<set_camera>& cameras = section.sets.back().cameras;
  if (!section.subdir_seen) {
    return expand_pattern(pattern, section.base_directory, section.base_listing, cameras[k].files,
                          section.pool);
  }
  int result = check_subdirectory_count(section.subdirectories.size(), cameras.size());
  if (result != code::success) return result;
  const std::size_t entry = section.subdirectories.size() == 1 ? 0 : k;
  const std::string folder = join_path(section.base_directory, section.subdirectories[entry]);
  std::vector<std::string> names;
  result = list_sorted(folder, names);
  if (result != code::success) return result;
  return expand_pattern(pattern, folder, names, cameras[k].files, section.pool);
}

int read_filename_patterns(set_section& section, std::string_view value, const std::string& line) {
  const auto patterns = quoted_entries(value);
  if (!patterns) return badly_formed(line);
  const std::size_t camera_count = section.sets.back().cameras.size();
  std::size_t k = 0;
  for (const std::string_view pattern : *patterns) {
    if (k >= camera_count) {
      print_line("Found more patterns than cameras in line: ", line);
      return code::content_malformed;
    }
    const int result = expand_camera(section, k, std::string(pattern));
    if (result != code::success) return result;
    ++k;
  }
  if (k != camera_count) {
    print_line("Found inconsistent patterns (", k, ") and cameras (", camera_count,
               ") in line: ", line);
    return code::content_malformed;
  }
  section.patterns_seen = true;
  return code::success;
}

int read_board_shape(set_section& section, std::string_view value, const std::string& line) {
  constexpr int smallest_side = 3;
  const auto misplaced = [&](std::string_view sign) {
    print_line("board_shape '", sign, "' not in expected location in line: ", line);
    return code::content_malformed;
  };
  set_config& set = section.sets.back();
  const std::size_t open = value.find('[');
  if (open == npos) return misplaced("[");
  const std::size_t comma = value.find(',', open + 1);
  if (comma == npos) return misplaced("'");  // so it is named, although a comma is missing
  set.board_width = int_of(value.substr(open + 1, comma - open));
  if (set.board_width < smallest_side) return code::argument_invalid;
  const std::size_t second = comma + 2;  // a comma and one blank
  const std::size_t close = value.find(']', second);
  if (close == npos) return misplaced("]");
  set.board_height = int_of(value.substr(second, close - second));
  if (set.board_height < smallest_side) return code::argument_invalid;
  section.shape_seen = true;
  return code::success;
}

using set_field = int (*)(set_section& section, std::string_view value, const std::string& line);

// The reader of the field that a key names; null for an unknown key.
set_field field_of(const line_key& key) {
  if (key.contains("set_name")) return read_set_name;
  if (key.contains("board_scale")) return read_board_scale;
  if (key.contains("cameras")) return read_cameras;
  if (key.contains("subdir")) return read_subdir;
  if (key.contains("filename_patterns")) return read_filename_patterns;
  if (key.contains("board_shape")) return read_board_shape;
  return nullptr;
}

}  // namespace

int read_set_line(set_section& section, const std::string& line) {
  std::size_t position = 0;
  for (;;) {
    const line_key key = next_key(line, position);
    if (key.contains("-")) {  // also on a line, or the rest of one, without a ":"
      const int result = begin_set(section);
      if (result != code::success) return result;
    }
    if (key.colon == npos) return code::success;
    const set_field read_field = field_of(key);
    if (!read_field) {
      print_line("Unrecognised calibration_sets: ", key.text);
      return code::content_malformed;
    }
    const auto value = value_behind(line, key.colon);
    if (!value || section.sets.empty()) return badly_formed(line);
    const int result = read_field(section, value->text, line);
    if (result != code::success) return result;
    position = value->next;
  }
}

int check_last_set(const set_section& section) { return check_set(section, ", subdir (optional)"); }

}  // namespace ocpan

#include "tools/check/config_walk.h"

#include <algorithm>

#include "platform/text_file.h"
#include "src/file_patterns.h"
#include "src/result_codes.h"
#include "tools/boards/printed_aside.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::size_t fewest_cameras = 2;
constexpr std::size_t most_cameras = 8;
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

enum class walk_section { top, cameras, sets };

key_fault unknown_top_key(std::string_view line, std::size_t position, std::string_view key) {
  if (position > 0) {
    return {line.find(':', position) + 1, "a second \":\" stands on this line of the top section",
            "give each key a line of its own; a comment, or the last two letters of a name, can't "
            "hold a \":\" here"};
  }
  const std::string_view name = trimmed(key);
  const std::size_t column = key.find_first_not_of(" \t") == npos ? 1 : key.find(name) + 1;
  if (name == "base_directory" || name == "output_filename" || name == "camera_info") {
    return {1, words("blanks stand around the key ", name),
            "begin it in the first column, with the \":\" right behind it"};
  }
  if (name.find('#') != npos) {
    return {column, "a comment holds a \":\" and is taken for a key", "take the \":\" out of it"};
  }
  if (name.find("calibration_sets") != npos || name.find("width") != npos ||
      name.find("set_name") != npos) {
    return {column, words("\"", name, "\" stands in the top section"),
            "put a line camera_info: ahead of the cameras"};
  }
  return {column, words("\"", name, "\" is no key of the top section"),
          "there are base_directory, output_filename and camera_info"};
}

text_place at_column(const config_walk& walk, std::size_t column) {
  return {walk.line_number, column};
}

// Lists the base folder anew, as the library does for each base_directory.
void walk_base_directory(config_walk& walk, const written_key& key) {
  set_section& sets = walk.sets;
  sets.base_directory = normalise_path(key.value);
  if (!key.value.empty()) sets.base_directory += '\\';
  int result = code::success;
  const std::string said =
      printed_aside([&] { result = list_sorted(sets.base_directory, sets.base_listing); });
  walk.base_refused = result != code::success;
  if (!walk.base_refused) return;
  const bool nothing_there = said.find("No files found") != npos;
  refuse(walk, key.value_at,
         words("the folder '", key.value, nothing_there ? "' is empty" : "' can't be opened"),
         "name the folder of the pictures, relative to the working folder or in full");
}

// The value between quotes; false with a refusal if there is none.
bool take_quoted(config_walk& walk, written_key& key, std::string_view line, std::size_t colon) {
  const std::size_t first = line.find('\'', colon + 1);
  const std::size_t second = first == npos ? npos : line.find('\'', first + 1);
  if (second == npos) {
    refuse(walk, at_column(walk, colon + 2), words("the value of ", key.key, " lacks its quotes"),
           "write it between two single quotes");
    return false;
  }
  key.value = line.substr(first + 1, second - first - 1);
  key.value_at = at_column(walk, first + 2);
  key.written = line.substr(colon + 1);
  return true;
}

void walk_top_line(config_walk& walk, walk_section& section, std::string_view line) {
  std::size_t position = 0;
  for (;;) {
    const std::size_t colon = line.find(':', position);
    if (colon == npos) return;
    const std::string_view key = line.substr(position, colon);
    written_key written;
    written.place = at_column(walk, position + 1);
    written.key = key;
    if (key == "base_directory" || key == "output_filename") {
      if (!take_quoted(walk, written, line, colon)) {
        walk.base_refused |= key == "base_directory";
        return;
      }
      walk.config.top.push_back(written);
      if (key == "output_filename") walk.config.output_file = normalise_path(written.value);
      if (key == "base_directory") walk_base_directory(walk, written);
      position += key.size() + 1 + written.value.size();
      continue;
    }
    if (trimmed(key) == "camera_info") {
      section = walk_section::cameras;
      written.written = line.substr(colon + 1);
      walk.config.top.push_back(written);
    }
    if (key != "camera_info") {
      const key_fault fault = unknown_top_key(line, position, key);
      refuse(walk, at_column(walk, fault.column), fault.what, fault.mend);
    }
    return;
  }
}

void check_counts(config_walk& walk) {
  const std::size_t cameras = walk.cameras.cameras.size();
  const std::size_t sets = walk.sets.sets.size();
  if (cameras < fewest_cameras || cameras > most_cameras) {
    refuse(walk, {},
           words(cameras == 1 ? "there is " : "there are ", cameras,
                 cameras == 1 ? " camera" : " cameras"),
           "a rig has 2 to 8; each begins with a \"-\" under camera_info:");
  } else if (sets < 2 * cameras - 1) {
    refuse(walk, {},
           words("there are ", sets, " sets, and ", cameras, " cameras need ", 2 * cameras - 1),
           "add sets; pictures of several cameras may also be named again in a set for one of "
           "them");
  }
}

const text_place& place_of(const written_set& set, std::string_view key) {
  const auto found = std::find_if(
      set.keys.rbegin(), set.keys.rend(),
      [&](const written_key& written) { return written.key.find(key) != std::string::npos; });
  return found == set.keys.rend() ? set.place : found->value_at;
}

// What a set with pictures can't be without: pictures of all its cameras, which the rig has.
void check_set(config_walk& walk, const written_set& set) {
  const std::vector<set_camera>& cameras = set.read.cameras;
  if (cameras.empty() || cameras.front().files.empty() || set.refused) return;
  for (std::size_t k = 0; k < cameras.size(); ++k) {
    const std::string id = std::to_string(cameras[k].id);
    if (cameras[k].files.empty()) {
      refuse(walk, place_of(set, "filename_patterns"),
             "no picture fits the pattern of camera " + id + ", while others of the set have some",
             "correct the pattern (it is case-sensitive and must fit the whole name), or the "
             "folder");
    }
    if (cameras[k].id < 1 ||
        static_cast<std::size_t>(cameras[k].id) > walk.cameras.cameras.size()) {
      refuse(walk, place_of(set, "cameras"), "there is no camera " + id,
             "cameras count from 1, in the order under camera_info:");
    }
  }
}

void note_passed_over(config_walk& walk, std::string_view line) {
  const std::string_view text = trimmed(line);
  if (text.empty() || is_comment(line) || text.find(':') != npos) return;
  written_key passed;
  passed.place = {walk.line_number, static_cast<std::size_t>(text.data() - line.data()) + 1};
  passed.key = text;
  walk.config.passed_over.push_back(passed);
}

// The mark ends a run if it stands ahead of a key; what follows is read as if it weren't there.
void walk_byte_order_mark(config_walk& walk, std::string& line) {
  if (walk.line_number != 1 || !line.starts_with(byte_order_mark)) return;
  line.erase(0, byte_order_mark.size());
  if (line.find(':') == npos) return;
  refuse(walk, {1, 1}, "the file begins with a byte order mark", "save it as UTF-8 without one");
}

void finish_walk(config_walk& walk, walk_section section) {
  if (section == walk_section::top) {
    refuse(walk, {}, "there is no line camera_info:", "put one ahead of the cameras");
  } else if (section == walk_section::cameras) {
    refuse(walk, {}, "there is no line calibration_sets:", "put one ahead of the sets");
  }
  if (section == walk_section::sets) refuse_incomplete_set(walk);
  if (section != walk_section::top) check_counts(walk);
  for (std::size_t k = 0; k < walk.config.cameras.size(); ++k) {
    walk.config.cameras[k].read = walk.cameras.cameras[k];
  }
  for (std::size_t k = 0; k < walk.config.sets.size(); ++k) {
    walk.config.sets[k].read = walk.sets.sets[k];
    check_set(walk, walk.config.sets[k]);
  }
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

std::string place_text(const written_config& config, const text_place& place) {
  if (place.line == 0) return config.file;
  return config.file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

void refuse(config_walk& walk, const text_place& place, const std::string& what,
            const std::string& mend) {
  walk.config.refusals.push_back({verdict::unusable, place_text(walk.config, place), what, mend});
}

bool is_comment(std::string_view line) { return trimmed(line).starts_with('#'); }

void refuse_comment_with_colon(config_walk& walk, std::string_view line) {
  refuse(walk, {walk.line_number, line.find('#') + 1},
         "a comment holds a \":\" and is taken for a key", "take the \":\" out of it");
}

key_stretch stretch_at(const config_walk& walk, std::string_view line, std::size_t position) {
  key_stretch stretch;
  stretch.offset = std::min(position, line.size());
  const line_key key = next_key(line, position);
  stretch.begins = key.contains("-");
  stretch.has_colon = key.colon != npos;
  const std::size_t name = key.text.find_first_not_of(" \t-");
  const std::size_t first = key.text.find_first_not_of(" \t");
  stretch.written.place = {walk.line_number, stretch.offset + (first == npos ? 0 : first) + 1};
  stretch.written.key = trimmed(key.text.substr(name == npos ? key.text.size() : name));
  stretch.text = key.text;
  stretch.next = npos;
  if (!stretch.has_colon) return stretch;
  const auto value = value_behind(line, key.colon);
  stretch.has_value = value.has_value();
  const std::size_t end = value ? value->next - 1 : line.size();
  stretch.text = line.substr(stretch.offset, end - stretch.offset);
  // A value of no character is one only if the line goes on.
  if (value && end == key.colon + 1) stretch.text += ' ';
  stretch.written.written = line.substr(key.colon + 1, end - key.colon - 1);
  if (value) {
    stretch.next = value->next;
    stretch.written.value = value->text;
    stretch.written.value_at = {walk.line_number, std::min(key.colon + 2, end) + 1};
  } else {
    stretch.written.value_at = {walk.line_number, key.colon + 2};
  }
  return stretch;
}

written_config walk_configuration(const std::string& file, std::istream& in) {
  written_config config;
  config.file = file;
  std::vector<camera_details> cameras;
  std::vector<set_config> sets;
  config_walk walk{config, 0, {cameras}, {sets, config.pool}};
  walk_section section = walk_section::top;
  std::string line;
  while (read_text_line(in, line)) {
    ++walk.line_number;
    walk_byte_order_mark(walk, line);
    note_passed_over(walk, line);
    if (section == walk_section::top) {
      walk_top_line(walk, section, line);
    } else if (section == walk_section::cameras) {
      walk_camera_line(walk, line);
      if (walk.cameras.closed) section = walk_section::sets;
    } else {
      walk_set_line(walk, line);
    }
  }
  finish_walk(walk, section);
  return config;
}

}  // namespace ocpan

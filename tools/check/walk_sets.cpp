#include <algorithm>
#include <iterator>
#include <string_view>

#include "src/result_codes.h"
#include "tools/boards/printed_aside.h"
#include "tools/check/config_walk.h"

namespace ocpan {
namespace {

constexpr std::string_view set_key_names[] = {"set_name", "board_scale",       "cameras",
                                              "subdir",   "filename_patterns", "board_shape"};

void begin_set(config_walk& walk, const text_place& place) {
  walk.config.sets.push_back({place, {}, walk.sets.base_directory, false, {}});
  walk.cameras_refused = false;
}

// A faulty value isn't a missing one too, and what follows from it is no further fault.
void take_as_given(set_section& sets, const std::string& key) {
  const auto names = [&](const char* part) { return key.find(part) != std::string::npos; };
  sets.name_seen |= names("set_name");
  sets.scale_seen |= names("board_scale");
  sets.cameras_seen |= names("cameras");
  sets.patterns_seen |= names("filename_patterns");
  sets.shape_seen |= names("board_shape");
}

// Feeds the stretch to the library's reader, with a refusal if that fails.
void feed(config_walk& walk, const key_stretch& stretch) {
  set_section& sets = walk.sets;
  const std::size_t before = sets.sets.size();
  int result = code::success;
  const std::string said = printed_aside([&] { result = read_set_line(sets, stretch.text); });
  if (sets.sets.size() > before) begin_set(walk, stretch.written.place);
  if (result == code::success) return;
  const key_fault fault = set_key_fault(walk, stretch, said);
  refuse(walk, {walk.line_number, fault.column}, fault.what, fault.mend);
  if (sets.sets.empty()) {
    static_cast<void>(printed_aside([&] { static_cast<void>(read_set_line(sets, "-")); }));
    begin_set(walk, stretch.written.place);
    static_cast<void>(printed_aside([&] { static_cast<void>(read_set_line(sets, stretch.text)); }));
  }
  take_as_given(sets, stretch.written.key);
  walk.config.sets.back().refused = true;
  walk.cameras_refused |= stretch.written.key.find("cameras") != std::string::npos;
}

}  // namespace

void refuse_incomplete_set(config_walk& walk) {
  set_section& sets = walk.sets;
  if (sets.sets.empty()) return;
  std::string missing;
  const auto needs = [&](bool& seen, const char* name) {
    if (!seen) missing += (missing.empty() ? "" : ", ") + std::string(name);
    seen = true;
  };
  needs(sets.name_seen, "set_name");
  needs(sets.scale_seen, "board_scale");
  needs(sets.cameras_seen, "cameras");
  needs(sets.patterns_seen, "filename_patterns");
  needs(sets.shape_seen, "board_shape");
  if (missing.empty()) return;
  const written_set& set = walk.config.sets.back();
  if (set.keys.empty()) {
    refuse(walk, set.place, "a \"-\" begins a set here, and nothing of a set follows",
           "take the \"-\" out; in this section a comment can't hold one");
  } else {
    refuse(walk, set.place, "this set lacks " + missing,
           "give each set these keys; a \"-\" anywhere ahead of a \":\", or in a line without one, "
           "begins a new set");
  }
}

namespace {

// Tells of a comment that the library takes for more, and passes it over.
bool refuse_comment(config_walk& walk, const std::string& line) {
  if (!is_comment(line)) return false;
  const line_key key = next_key(line, 0);
  if (key.colon != line.npos) {
    const auto names = [&](std::string_view part) { return key.contains(part); };
    if (std::any_of(std::begin(set_key_names), std::end(set_key_names), names)) return false;
    refuse_comment_with_colon(walk, line);
    return true;
  }
  const set_section& sets = walk.sets;
  const bool complete = sets.name_seen && sets.scale_seen && sets.cameras_seen &&
                        sets.patterns_seen && sets.shape_seen;
  if (!key.contains("-") || sets.sets.empty() || complete) return false;
  refuse(walk, {walk.line_number, line.find('#') + 1},
         "a comment holds a \"-\", which begins a new set", "take the \"-\" out of it");
  return true;
}

}  // namespace

void walk_set_line(config_walk& walk, const std::string& line) {
  if (refuse_comment(walk, line)) return;
  for (std::size_t position = 0; position != line.npos;) {
    const key_stretch stretch = stretch_at(walk, line, position);
    position = stretch.next;
    if (stretch.begins) refuse_incomplete_set(walk);
    if (!stretch.has_colon) {
      if (stretch.begins) feed(walk, stretch);
      return;
    }
    const bool patterns = stretch.written.key.find("filename_patterns") != line.npos;
    const bool judged = !walk.cameras_refused && !walk.base_refused;
    if (patterns && !stretch.begins && !judged && !walk.sets.sets.empty()) {
      walk.sets.patterns_seen = true;  // the fault behind it is told
      walk.config.sets.back().refused = true;
    } else {
      feed(walk, stretch);
    }
    if (!walk.config.sets.empty()) walk.config.sets.back().keys.push_back(stretch.written);
  }
}

}  // namespace ocpan

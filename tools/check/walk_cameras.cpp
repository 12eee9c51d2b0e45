#include <optional>

#include "tools/boards/printed_aside.h"
#include "tools/check/config_walk.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr int absent = -1;

// Tells of the last camera if it lacks something, and takes it as complete from then on.
void refuse_incomplete_camera(config_walk& walk) {
  if (walk.cameras.cameras.empty()) return;
  camera_details& camera = walk.cameras.cameras.back();
  std::string missing;
  const auto lacks = [&](const char* name) {
    missing += (missing.empty() ? "" : ", ") + std::string(name);
  };
  if (camera.width == absent) lacks("width");
  if (camera.height == absent) lacks("height");
  if (camera.hfov == absent) lacks("hfov");
  if (!walk.cameras.lens_seen) lacks("lens");
  if (missing.empty()) return;
  refuse(walk, walk.config.cameras.back().place, "this camera lacks " + missing,
         "each camera has a width, a height, a hfov in degrees and a lens (0 rectilinear, 1 and 2 "
         "fisheye)");
  if (camera.width == absent) camera.width = 1;
  if (camera.height == absent) camera.height = 1;
  if (camera.hfov == absent) camera.hfov = 1;
  walk.cameras.lens_seen = true;
}

void begin_camera(config_walk& walk, const text_place& place) {
  walk.config.cameras.push_back({place, {}, {}});
}

key_fault camera_key_fault(const key_stretch& stretch, bool begun) {
  const written_key& key = stretch.written;
  const std::size_t column = key.place.column;
  const auto names = [&](std::string_view part) { return key.key.find(part) != std::string::npos; };
  if (names("base_directory") || names("output_filename") || names("camera_info")) {
    return {column, words("\"", key.key, "\" stands among the cameras"),
            "put it ahead of camera_info:"};
  }
  const bool known = names("width") || names("height") || names("hfov") || names("lens");
  if (!known) {
    const bool of_set = names("set_name") || names("cameras") || names("board");
    return {column, words("\"", key.key, "\" is no key of a camera"),
            of_set ? "put a line calibration_sets: ahead of the sets"
                   : "a camera has width, height, hfov and lens; a comment holds no \":\""};
  }
  if (!begun) {
    return {column, "no camera has begun here", "put a \"-\" ahead of each camera's first key"};
  }
  if (!stretch.has_value) {
    return {key.value_at.column,
            words("the value of ", key.key, " is missing, or the comma behind it"),
            "write the value behind \": \", and a comma ahead of a next key"};
  }
  return {key.value_at.column, "there is no lens '" + key.value + "'",
          "0 is a rectilinear lens, 1 and 2 are fisheyes"};
}

// A faulty value isn't a missing one too.
void take_as_given(config_walk& walk, const std::string& key) {
  const auto names = [&](const char* part) { return key.find(part) != std::string::npos; };
  camera_details& camera = walk.cameras.cameras.back();
  if (names("width") && camera.width == absent) camera.width = 1;
  if (names("height") && camera.height == absent) camera.height = 1;
  if (names("hfov") && camera.hfov == absent) camera.hfov = 1;
  if (names("lens")) walk.cameras.lens_seen = true;
}

void refuse_key(config_walk& walk, const key_stretch& stretch) {
  const bool begun = !walk.cameras.cameras.empty();
  const key_fault fault = camera_key_fault(stretch, begun);
  refuse(walk, {walk.line_number, fault.column}, fault.what, fault.mend);
  if (!begun) {
    walk.cameras.cameras.push_back({absent, absent, absent, absent});
    begin_camera(walk, stretch.written.place);
    static_cast<void>(
        printed_aside([&] { static_cast<void>(read_camera_line(walk.cameras, stretch.text)); }));
  }
  take_as_given(walk, stretch.written.key);
}

// Tells of a comment that the library takes for a key, and passes it over.
bool refuse_comment(config_walk& walk, const std::string& line) {
  const line_key key = next_key(line, 0);
  if (!is_comment(line) || key.colon == line.npos) return false;
  for (const char* name : {"width", "height", "hfov", "lens", "calibration_sets"}) {
    if (key.contains(name)) return false;
  }
  refuse_comment_with_colon(walk, line);
  return true;
}

}  // namespace

void walk_camera_line(config_walk& walk, const std::string& line) {
  if (refuse_comment(walk, line)) return;
  for (std::size_t position = 0; position != line.npos;) {
    const key_stretch stretch = stretch_at(walk, line, position);
    if (!stretch.has_colon) return;
    position = stretch.next;
    const bool closes = next_key(stretch.text, 0).contains("calibration_sets");
    if (closes || stretch.begins) refuse_incomplete_camera(walk);
    const std::size_t before = walk.cameras.cameras.size();
    std::optional<int> end;
    static_cast<void>(printed_aside([&] { end = read_camera_line(walk.cameras, stretch.text); }));
    if (walk.cameras.cameras.size() > before) begin_camera(walk, stretch.written.place);
    if (end) refuse_key(walk, stretch);
    if (walk.cameras.closed) return;
    walk.config.cameras.back().keys.push_back(stretch.written);
  }
}

}  // namespace ocpan

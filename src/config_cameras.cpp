#include "src/config_cameras.h"

#include <cstddef>

#include "src/config_lines.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

// No internal code on purpose: these two failures are exported as the general one.
constexpr int general_failure = -2;

constexpr int width_missing = 1;
constexpr int absent = -1;

// Checks the camera read last, if there is one. The message is known for its oddities: a 1
// stands for a missing width, height and hfov but for a lens that is there, and the height
// shown is the width's.
std::optional<int> check_last_camera(const camera_section& section) {
  if (section.cameras.empty()) return std::nullopt;
  const camera_details& camera = section.cameras.back();
  const bool no_width = camera.width == absent;
  const bool no_hfov = camera.hfov == absent;
  if (!no_width && camera.height != absent && !no_hfov && section.lens_seen) return std::nullopt;
  print_line("Camera Details incomplete");
  print_line("Details present were: Width ", no_width, ", Height ", no_width, ", Hfov ", no_hfov,
             ", Lens ", section.lens_seen);
  return no_width ? width_missing : code::success;
}

enum class camera_field { width, height, hfov, lens };

std::optional<camera_field> field_of(const line_key& key) {
  if (key.contains("width")) return camera_field::width;
  if (key.contains("height")) return camera_field::height;
  if (key.contains("hfov")) return camera_field::hfov;
  if (key.contains("lens")) return camera_field::lens;
  return std::nullopt;
}

std::optional<int> set_field(camera_section& section, camera_field field, std::string_view value,
                             const std::string& line) {
  camera_details& camera = section.cameras.back();
  switch (field) {
    case camera_field::width:
      camera.width = int_of(value);
      break;
    case camera_field::height:
      camera.height = int_of(value);
      break;
    case camera_field::hfov:
      camera.hfov = float_of(value);
      break;
    case camera_field::lens:
      camera.lens = int_of(value);
      section.lens_seen = true;
      if (camera.lens < 0 || camera.lens > 2) {
        print_line("Lens expects 0, 1 or 2, got: '", value, "', in line: ", line);
        return general_failure;
      }
      break;
  }
  return std::nullopt;
}

}  // namespace

std::optional<int> read_camera_line(camera_section& section, const std::string& line) {
  std::size_t position = 0;
  for (;;) {
    const line_key key = next_key(line, position);
    if (key.colon == line.npos) return std::nullopt;
    const bool closes = key.contains("calibration_sets");
    if (closes || key.contains("-")) {
      if (const auto end = check_last_camera(section)) return end;
      if (closes) {
        section.closed = true;
        return std::nullopt;
      }
      section.cameras.push_back({absent, absent, absent, absent});
      section.lens_seen = false;
    }
    const auto field = field_of(key);
    if (!field) {
      print_line("Unrecognised camera_info: ", key.text);
      return general_failure;
    }
    const auto value = value_behind(line, key.colon);
    if (!value || section.cameras.empty()) return badly_formed(line);
    if (const auto end = set_field(section, *field, value->text, line)) return end;
    position = value->next;
  }
}

}  // namespace ocpan

#include "src/read_config.h"

#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/text_file.h"
#include "src/config_cameras.h"
#include "src/config_lines.h"
#include "src/config_sets.h"
#include "src/config_summary.h"
#include "src/console.h"
#include "src/file_patterns.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

constexpr std::size_t most_cameras = 8;

// The sections follow one another; there is no way back.
enum class config_section { top, cameras, sets };

struct config_reading {
  config_section section = config_section::top;
  std::string& output_file;
  camera_section cameras;
  set_section sets;
};

// A second base_directory replaces the folder and adds to the listing.
int read_base_directory(set_section& sets, std::string_view value) {
  sets.base_directory = normalise_path(value);
  if (!value.empty()) sets.base_directory += '\\';
  return list_sorted(sets.base_directory, sets.base_listing);
}

int read_top_line(config_reading& reading, std::string_view line) {
  std::size_t position = 0;
  for (;;) {
    const std::size_t colon = line.find(':', position);
    if (colon == line.npos) return code::success;
    // As long as the ":"'s index in the line. Only a key in the first column is cut right,
    // so a second key of a line is never known.
    const std::string_view key = line.substr(position, colon);
    const std::string_view rest = line.substr(colon + 1);
    if (key == "camera_info") {
      reading.section = config_section::cameras;
      return code::success;
    }
    std::string_view value;
    if (key == "base_directory") {
      int result = quoted_value(value, rest);
      if (result == code::success) result = read_base_directory(reading.sets, value);
      if (result != code::success) return result;
    } else if (key == "output_filename") {
      const int result = quoted_value(value, rest);
      if (result != code::success) return result;
      reading.output_file = normalise_path(value);
    } else {
      print_line("Unrecognised id: ", key);
      return code::content_malformed;
    }
    position += key.size() + 1 + value.size();  // within the value's end
  }
}

// The code that the whole reading ends with, if it ends with this line.
std::optional<int> read_config_line(config_reading& reading, const std::string& line) {
  int result = code::success;
  switch (reading.section) {
    case config_section::top:
      result = read_top_line(reading, line);
      break;
    case config_section::cameras:
      if (const auto end = read_camera_line(reading.cameras, line)) return end;
      if (reading.cameras.closed) reading.section = config_section::sets;
      break;
    case config_section::sets:
      result = read_set_line(reading.sets, line);
      break;
  }
  if (result != code::success) return result;
  return std::nullopt;
}

int check_counts(std::size_t cameras, std::size_t sets) {
  if (cameras == 0 || cameras > most_cameras) {
    print_line("Invalid number of camera details supplied: ", cameras, ", should be in  1..",
               most_cameras);
    return code::content_malformed;
  }
  if (sets < 2 * cameras - 1) {
    print_line("Invalid number of calibration sets supplied: ", sets,
               ", should be at least 2*num cameras-1, ideally more");
    return code::content_malformed;
  }
  return code::success;
}

}  // namespace

int read_config(std::vector<camera_details>& cameras, std::vector<set_config>& sets,
                std::string& output_file, string_pool& pool, const char* config_file) {
  std::ifstream in = open_input(config_file);
  if (!in) {
    print_line("Couldn't open: ", config_file);
    return code::input_unusable;
  }
  config_reading reading{config_section::top, output_file, {cameras}, {sets, pool}};
  std::string line;
  while (read_text_line(in, line)) {
    if (const auto end = read_config_line(reading, line)) return *end;
  }
  if (in.bad()) {
    print_line("Couldn't read: ", config_file);
    return code::input_unusable;
  }
  in.close();
  int result = check_last_set(reading.sets);
  if (result == code::success) result = check_counts(cameras.size(), sets.size());
  if (result == code::success) result = print_config_summary(output_file, cameras, sets);
  return result;
}

}  // namespace ocpan

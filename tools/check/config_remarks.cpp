#include "tools/check/config_remarks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "src/config_lines.h"
#include "tools/cal_checks.h"
#include "tools/check/config_walk.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr std::size_t npos = std::string_view::npos;

constexpr std::string_view camera_keys[] = {"width", "height", "hfov", "lens"};
constexpr std::string_view set_keys[] = {"set_name", "board_scale",       "cameras",
                                         "subdir",   "filename_patterns", "board_shape"};

// The remarks of one configuration as they come together.
struct remark_list {
  const written_config& config;
  std::vector<finding> found;

  void add(verdict weight, const text_place& place, const std::string& what,
           const std::string& mend) {
    found.push_back({weight, place_text(config, place), what, mend});
  }
};

// The known key that the library takes a key for; empty if it knows none.
template <typename Keys>
std::string_view taken_for(const Keys& keys, std::string_view key) {
  for (const std::string_view known : keys) {
    if (key.find(known) != npos) return known;
  }
  return {};
}

template <typename Keys>
void check_keys(remark_list& list, const Keys& keys, const std::vector<written_key>& written) {
  std::vector<std::string_view> seen;
  for (const written_key& key : written) {
    const std::string_view known = taken_for(keys, key.key);
    if (known.empty()) continue;
    if (key.key != known) {
      list.add(verdict::doubtful, key.place, words("\"", key.key, "\" is taken for ", known),
               words("write ", known, ", or take it out"));
    }
    if (std::find(seen.begin(), seen.end(), known) != seen.end()) {
      list.add(verdict::doubtful, key.place, words(known, " stands a second time"),
               "take one of the two out");
    }
    seen.push_back(known);
    if (!key.written.empty() && key.written.front() != ' ' && !key.value.empty()) {
      list.add(
          verdict::unusable, key.value_at,
          words("a blank is missing behind the \":\", so the library reads \"", key.value, "\""),
          "write \": \", a colon and a blank");
    }
  }
}

// Tells of a number that isn't one, or goes on as something else.
void check_number(remark_list& list, const written_key& key, bool whole) {
  const std::string text(trimmed(key.value));
  char* end = nullptr;
  if (whole) {
    static_cast<void>(std::strtol(text.c_str(), &end, 10));
  } else {
    static_cast<void>(std::strtod(text.c_str(), &end));
  }
  if (end == text.c_str()) {
    list.add(verdict::unusable, key.value_at, words("\"", text, "\" is no number and read as 0"),
             words("write the number of ", key.key));
  } else if (*end != '\0') {
    list.add(
        verdict::doubtful, key.value_at,
        words("\"", text, "\" is read as ", text.substr(0, text.size() - std::string(end).size())),
        "leave only the number");
  }
}

void check_camera(remark_list& list, const written_camera& camera) {
  check_keys(list, camera_keys, camera.keys);
  const camera_details& read = camera.read;
  for (const written_key& key : camera.keys) {
    const std::string_view known = taken_for(camera_keys, key.key);
    if (known.empty() || key.value.empty()) continue;
    check_number(list, key, known != "hfov");
    const int size = known == "width" ? read.width : known == "height" ? read.height : 1;
    if (size <= 0) {
      list.add(verdict::unusable, key.value_at, words(known, " is ", size),
               "write the pictures' size in pixels");
    }
    if (known != "hfov") continue;
    if (!(read.hfov > 0 && read.hfov <= 360)) {
      list.add(verdict::unusable, key.value_at, words("hfov is ", read.hfov, " degrees"),
               "write the horizontal field of view in degrees, roughly");
    } else if (read.lens == 0 && read.hfov >= 180) {
      list.add(verdict::unusable, key.value_at,
               words("a rectilinear lens (0) can't see ", read.hfov, " degrees"),
               "write lens: 1 or 2 for a fisheye, or correct hfov");
    }
  }
}

// The numbers between brackets as a person reads them.
std::vector<int> numbers_in(std::string_view text) {
  std::vector<int> numbers;
  const std::size_t open = text.find('[');
  if (open == npos) return numbers;
  const std::size_t close = std::min(text.find(']', open), text.size());
  for (std::size_t start = open + 1; start < close;) {
    const std::size_t end = std::min(text.find(',', start), close);
    numbers.push_back(int_of(trimmed(text.substr(start, end - start))));
    start = end + 1;
  }
  return numbers;
}

// The texts between pairs of quotes as a person reads them.
std::vector<std::string_view> texts_in(std::string_view text) {
  std::vector<std::string_view> texts;
  for (std::size_t open = text.find('\''); open != npos; open = text.find('\'', open)) {
    const std::size_t close = text.find('\'', open + 1);
    if (close == npos) break;
    texts.push_back(text.substr(open + 1, close - open - 1));
    open = close + 1;
  }
  return texts;
}

template <typename List>
std::string listed(const List& items) {
  std::string text;
  for (const auto& item : items) text += words(text.empty() ? "" : ", ", item);
  return text;
}

void check_quoted_list(remark_list& list, const written_key& key) {
  const auto read = quoted_entries(key.value);
  if (!read || *read == texts_in(key.value)) return;
  list.add(
      verdict::unusable, key.value_at, words("the library reads these entries: ", listed(*read)),
      "part the entries by a comma and exactly one blank, and leave no blanks behind the list");
}

void check_camera_list(remark_list& list, const written_key& key, const written_set& set) {
  std::vector<int> ids;
  for (const set_camera& camera : set.read.cameras) ids.push_back(camera.id);
  if (ids != numbers_in(key.value)) {
    list.add(verdict::unusable, key.value_at,
             words("the library reads the cameras ", listed(ids), " here"),
             "part the numbers by a comma and exactly one blank");
  }
  std::sort(ids.begin(), ids.end());
  if (std::adjacent_find(ids.begin(), ids.end()) != ids.end()) {
    list.add(verdict::unusable, key.value_at, "a camera stands twice in this set",
             "name each camera once");
  }
}

void check_shape(remark_list& list, const written_key& key, const written_set& set) {
  const int width = set.read.board_width;
  const int height = set.read.board_height;
  if (numbers_in(key.value) != std::vector<int>{width, height}) {
    list.add(verdict::unusable, key.value_at,
             words("the library reads a board of ", width, " by ", height, " here"),
             "write it as board_shape: [9, 6], a comma and one blank between the numbers");
  }
  if ((width + height) % 2 != 0) return;
  list.add(verdict::doubtful, key.value_at,
           words("a board of ", width, " by ", height, " looks the same after half a turn",
                 width == height ? ", and after a quarter" : "",
                 ", so two cameras may count its corners from different ends"),
           "print a board of which one side has an odd and the other an even number of inner "
           "corners, such as 9 by 6 or 11 by 8");
}

void check_set(remark_list& list, const written_set& set) {
  check_keys(list, set_keys, set.keys);
  bool patterns_seen = false;
  for (const written_key& key : set.keys) {
    const std::string_view known = taken_for(set_keys, key.key);
    if (known == "board_scale") {
      check_number(list, key, false);
      if (!(set.read.board_scale > 0) || std::isinf(set.read.board_scale)) {
        list.add(verdict::unusable, key.value_at, words("board_scale is ", set.read.board_scale),
                 "write the side of a square; its unit is that of all lengths");
      }
    }
    if (known == "subdir" && patterns_seen) {
      list.add(verdict::unusable, key.place,
               "subdir stands behind filename_patterns and has no "
               "effect",
               "put it ahead of filename_patterns");
    }
    patterns_seen |= known == "filename_patterns";
    if (set.refused) continue;  // what was read is not what stands there
    if (known == "subdir" || known == "filename_patterns") check_quoted_list(list, key);
    if (known == "cameras") check_camera_list(list, key, set);
    if (known == "board_shape") check_shape(list, key, set);
  }
}

void check_top(remark_list& list) {
  const written_config& config = list.config;
  const auto check_once = [&](std::string_view name) {
    const auto has_name = [&](const written_key& key) { return key.key == name; };
    const auto first = std::find_if(config.top.begin(), config.top.end(), has_name);
    if (first == config.top.end()) return;
    const auto second = std::find_if(first + 1, config.top.end(), has_name);
    if (second == config.top.end()) return;
    list.add(verdict::doubtful, second->place, words(name, " stands a second time"),
             "take one of the two out");
  };
  check_once("base_directory");
  check_once("output_filename");
  text_place place;
  for (const written_key& key : config.top) {
    if (key.key == "output_filename") place = key.value_at;
    const std::string_view rest = trimmed(key.written);
    if (key.key == "camera_info" && !rest.empty() && rest.front() != '#') {
      list.add(verdict::doubtful, key.place, "what stands behind camera_info: is not read",
               "put it on a line of its own");
    }
  }
  const std::string obstacle = obstacle_to_calibration(config.file, {true, config.output_file});
  if (obstacle.empty()) return;
  const std::size_t cut = obstacle.find("; ");
  list.add(verdict::unusable, place, obstacle.substr(0, cut),
           cut == npos ? "" : obstacle.substr(cut + 2));
}

// A calibration holds the cameras of a kind alike, from the start on.
void check_alike(remark_list& list) {
  const std::vector<written_camera>& cameras = list.config.cameras;
  for (std::size_t k = 1; k < cameras.size(); ++k) {
    const camera_details& camera = cameras[k].read;
    const auto first = std::find_if(cameras.begin(), cameras.end(), [&](const auto& other) {
      return (other.read.lens == 0) == (camera.lens == 0);
    });
    const auto index = static_cast<std::size_t>(first - cameras.begin());
    if (index >= k) continue;
    const std::string kind = camera.lens == 0 ? "rectilinear lenses" : "fisheyes";
    if (camera.hfov != first->read.hfov) {
      list.add(verdict::doubtful, cameras[k].place,
               words("camera ", k + 1, " has a hfov of ", camera.hfov, " and camera ", index + 1,
                     " one of ", first->read.hfov, ", but a calibration holds ", kind,
                     " alike in scale"),
               "give alike lenses the same hfov, a rough one does; a degree of difference can "
               "spoil the result");
    } else if (camera.width != first->read.width || camera.height != first->read.height) {
      list.add(verdict::doubtful, cameras[k].place,
               words("the pictures of camera ", k + 1, " differ in size from those of camera ",
                     index + 1, ", but a calibration holds ", kind, " alike in centre and scale"),
               camera.width == first->read.height && camera.height == first->read.width
                   ? "see that width and height aren't swapped in one of the two"
                   : "shoot all with one size, if the cameras can");
    }
  }
}

void check_passed_over(remark_list& list) {
  for (const written_key& line : list.config.passed_over) {
    std::string_view known = taken_for(set_keys, line.key);
    if (known.empty()) known = taken_for(camera_keys, line.key);
    if (known.empty()) continue;
    list.add(verdict::doubtful, line.place,
             words("a line with \"", known, "\" but without \":\" is passed over"),
             "write \": \" behind the key, or begin a comment with \"#\"");
  }
}

}  // namespace

std::vector<finding> config_remarks(const written_config& config) {
  remark_list list{config, {}};
  check_top(list);
  for (const written_camera& camera : config.cameras) check_camera(list, camera);
  check_alike(list);
  for (const written_set& set : config.sets) check_set(list, set);
  check_passed_over(list);
  return std::move(list.found);
}

}  // namespace ocpan

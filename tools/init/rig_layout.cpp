#include "tools/init/rig_layout.h"

#include <algorithm>
#include <map>
#include <regex>
#include <set>

#include "src/file_patterns.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

// The parts of a series' place by which series can differ: its folders below the one that
// all have in common, outermost first, and at the end what its names have around the number.
using place_parts = std::vector<std::string>;

std::vector<std::string> folders_of(const std::string& path) {
  std::vector<std::string> folders;
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    folders.push_back(path.substr(start, end - start));
    start = end + 1;
  }
  return folders;
}

// Without the signs that part a name from a number, and without the ending.
std::string name_key(const picture_series& series) {
  std::string key = series.before + "_" + series.after.substr(0, series.after.rfind('.'));
  const auto parts = [](char c) {
    return std::string_view("_-. ").find(c) != std::string_view::npos;
  };
  while (!key.empty() && parts(key.back())) key.pop_back();
  while (!key.empty() && parts(key.front())) key.erase(key.begin());
  return key;
}

std::vector<place_parts> parts_of(const std::vector<picture_series>& series) {
  std::vector<place_parts> all;
  for (const picture_series& of : series) all.push_back(folders_of(of.folder));
  std::size_t common = all.front().size();
  for (const place_parts& folders : all) {
    const auto end =
        std::mismatch(all.front().begin(), all.front().end(), folders.begin(), folders.end());
    common = std::min(common, static_cast<std::size_t>(end.first - all.front().begin()));
  }
  std::size_t longest = 0;
  for (place_parts& folders : all) {
    folders.erase(folders.begin(), folders.begin() + static_cast<std::ptrdiff_t>(common));
    longest = std::max(longest, folders.size());
  }
  for (std::size_t k = 0; k < all.size(); ++k) {
    all[k].resize(longest);
    all[k].push_back(name_key(series[k]));
  }
  return all;
}

bool looks_like_a_camera(const std::string& text) {
  static const std::regex camera(
      "(.*[^a-z])?(cam(era)?|lens|fisheye|eye|sensor|left|right|front|back|rear|top|bottom|up|"
      "down|[lrfb])[ _.-]*[0-9a-d]?",
      std::regex::icase);
  return std::regex_match(text, camera);
}

// Which part names the camera: of those that tell series apart the last in which two values
// look like a camera's, otherwise the last.
struct camera_part {
  std::size_t part = 0;
  bool by_look = false;
};

camera_part find_camera_part(const std::vector<place_parts>& places) {
  const std::size_t count = places.front().size();
  std::size_t telling = count - 1;
  bool told = false;
  for (std::size_t part = count; part-- > 0;) {
    std::set<std::string> values, cameras;
    for (const place_parts& place : places) {
      values.insert(place[part]);
      if (looks_like_a_camera(place[part])) cameras.insert(place[part]);
    }
    if (cameras.size() >= 2) return {part, true};
    if (values.size() < 2 || told) continue;
    telling = part;
    told = true;
  }
  return {telling, false};
}

// Whether two series count alike, and whether without any gap.
bool count_alike(const picture_series& a, const picture_series& b) {
  const std::set<long long> in_a(a.numbers.begin(), a.numbers.end());
  const auto common = std::count_if(b.numbers.begin(), b.numbers.end(),
                                    [&](long long number) { return in_a.contains(number); });
  return 2 * static_cast<std::size_t>(common) > std::max(a.numbers.size(), b.numbers.size());
}

std::string set_key(const place_parts& place, std::size_t camera) {
  std::string key;
  for (std::size_t part = 0; part < place.size(); ++part) {
    if (part != camera && !place[part].empty()) key += (key.empty() ? "" : "_") + place[part];
  }
  std::replace_if(
      key.begin(), key.end(),
      [](char c) { return std::string_view("':,/\\").find(c) != std::string_view::npos; }, '_');
  return key.empty() ? "all" : key;
}

// One set key's series, by camera.
using keyed_series = std::map<std::size_t, std::size_t>;

void add_sets(rig_layout& layout, const std::string& key, keyed_series open,
              const std::vector<picture_series>& series) {
  for (int part = 0; !open.empty(); ++part) {
    const std::size_t first = open.begin()->second;
    layout_set set;
    set.name = part == 0 ? key : words(key, "_", part + 1);
    for (auto it = open.begin(); it != open.end();) {
      if (it->second != first && !count_alike(series[first], series[it->second])) {
        ++it;
        continue;
      }
      if (series[it->second].numbers != series[first].numbers) {
        layout.doubts.push_back(words("The series ", series[first].before, "* and ",
                                      series[it->second].before, "* in ", series[first].folder,
                                      " don't hold the same numbers; pictures are paired by their "
                                      "place, so take out those without a partner."));
      }
      set.cameras.push_back(it->first);
      set.series.push_back(it->second);
      it = open.erase(it);
    }
    layout.sets.push_back(set);
  }
}

// Further sets from the same pictures: each camera alone, then neighbours.
void fill_up(rig_layout& layout) {
  const std::size_t cameras = layout.cameras.size();
  const std::vector<layout_set> shot = layout.sets;
  for (std::size_t camera = 0; camera < cameras; ++camera) {
    const auto alone = [&](const layout_set& set) {
      return set.cameras == std::vector<std::size_t>{camera};
    };
    if (std::any_of(shot.begin(), shot.end(), alone)) continue;
    for (const layout_set& set : shot) {
      const auto at = std::find(set.cameras.begin(), set.cameras.end(), camera);
      if (at == set.cameras.end()) continue;
      const auto k = static_cast<std::size_t>(at - set.cameras.begin());
      layout.sets.push_back({words(set.name, "_alone", camera + 1), {camera}, {set.series[k]}});
    }
  }
  for (const layout_set& set : shot) {
    for (std::size_t k = 1; set.cameras.size() > 2 && k < set.cameras.size(); ++k) {
      if (layout.sets.size() + 1 >= 2 * cameras) return;
      layout.sets.push_back({words(set.name, "_pair", set.cameras[k - 1] + 1, set.cameras[k] + 1),
                             {set.cameras[k - 1], set.cameras[k]},
                             {set.series[k - 1], set.series[k]}});
    }
  }
}

}  // namespace

rig_layout lay_out(const std::vector<picture_series>& series) {
  rig_layout layout;
  if (series.empty()) return layout;
  const std::vector<place_parts> places = parts_of(series);
  const auto [part, by_look] = find_camera_part(places);
  std::set<std::string> names;
  for (const place_parts& place : places) {
    if (!by_look || looks_like_a_camera(place[part])) names.insert(place[part]);
  }
  layout.cameras.assign(names.begin(), names.end());
  sort_names(layout.cameras);
  std::map<std::string, keyed_series> by_key;
  for (std::size_t k = 0; k < series.size(); ++k) {
    const auto at = std::find(layout.cameras.begin(), layout.cameras.end(), places[k][part]);
    const auto camera = static_cast<std::size_t>(at - layout.cameras.begin());
    if (at == layout.cameras.end() || !by_key[set_key(places[k], part)].emplace(camera, k).second) {
      layout.left_out.push_back(k);
    }
  }
  for (const auto& [key, of] : by_key) add_sets(layout, key, of, series);
  fill_up(layout);
  return layout;
}

}  // namespace ocpan

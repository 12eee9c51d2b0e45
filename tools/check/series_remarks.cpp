#include <algorithm>
#include <charconv>
#include <optional>
#include <set>
#include <string_view>

#include "tools/check/config_remarks.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr std::size_t most_names = 5;  // told in a sentence

std::string_view name_of(std::string_view path) {
  const std::size_t slash = path.rfind('\\');
  return slash == path.npos ? path : path.substr(slash + 1);
}

// The last number in a name ahead of its ending.
std::optional<long long> number_of(std::string_view name) {
  const std::size_t last = name.find_last_of("0123456789", name.rfind('.'));
  if (last == name.npos) return std::nullopt;
  const std::size_t before = name.find_last_not_of("0123456789", last);
  const std::size_t first = before == name.npos ? 0 : before + 1;
  long long number = 0;
  const auto read = std::from_chars(name.data() + first, name.data() + last + 1, number);
  if (read.ec != std::errc()) return std::nullopt;
  return number;
}

std::vector<long long> numbers_of(const set_camera& camera) {
  std::vector<long long> numbers;
  for (const char* file : camera.files) {
    if (const auto number = number_of(name_of(file))) numbers.push_back(*number);
  }
  return numbers;
}

// Whether two series count alike: most numbers of the shorter stand in the other too.
bool count_alike(const std::vector<long long>& a, const std::vector<long long>& b) {
  const std::set<long long> in_a(a.begin(), a.end());
  const auto common = std::count_if(b.begin(), b.end(), [&](auto n) { return in_a.contains(n); });
  return 2 * static_cast<std::size_t>(common) >= std::min(a.size(), b.size());
}

text_place place_of(const written_set& set, std::string_view name) {
  for (const written_key& key : set.keys) {
    if (key.key.find(name) != key.key.npos) return key.value_at;
  }
  return set.place;
}

std::string set_words(const written_set& set) {
  return words("set ", set.read.set_prefix ? set.read.set_prefix : "");
}

std::optional<finding> unequal_lengths(const written_set& set) {
  std::size_t fewest = set.read.cameras.front().files.size();
  for (const set_camera& camera : set.read.cameras) fewest = std::min(fewest, camera.files.size());
  std::string counts, spare;
  std::size_t spare_count = 0;
  for (const set_camera& camera : set.read.cameras) {
    counts += words(counts.empty() ? "" : ", ", "camera ", camera.id, " has ", camera.files.size());
    for (std::size_t k = fewest; k < camera.files.size(); ++k) {
      if (++spare_count <= most_names) {
        spare += words(spare.empty() ? "" : ", ", name_of(camera.files[k]));
      }
    }
  }
  if (spare_count == 0) return std::nullopt;
  if (spare_count > most_names) spare += words(" and ", spare_count - most_names, " more");
  return finding{verdict::doubtful, "",
                 words(set_words(set), ": the series are of unequal length (", counts,
                       "); passed over: ", spare),
                 "pictures are paired by their place in the list, so a missing picture shifts all "
                 "behind it; take the others of that moment out too"};
}

// Where the numbers of two series part that count alike.
std::optional<finding> other_numbers(const written_set& set, const set_camera& a,
                                     const set_camera& b) {
  const std::vector<long long> in_a = numbers_of(a), in_b = numbers_of(b);
  if (in_a.size() != a.files.size() || in_b.size() != b.files.size()) return std::nullopt;
  if (!count_alike(in_a, in_b)) return std::nullopt;
  const auto [at_a, at_b] = std::mismatch(in_a.begin(), in_a.end(), in_b.begin(), in_b.end());
  if (at_a == in_a.end() || at_b == in_b.end()) return std::nullopt;
  const auto frame = static_cast<std::size_t>(at_a - in_a.begin());
  return finding{
      verdict::doubtful, "",
      words(set_words(set), ": from frame ", frame,
            " on the pictures don't carry the same number: ", name_of(a.files[frame]),
            " of camera ", a.id, " is paired with ", name_of(b.files[frame]), " of camera ", b.id),
      "take out the picture whose partner is missing; number the frames with leading zeros"};
}

std::optional<finding> same_picture(const written_set& set) {
  const std::vector<set_camera>& cameras = set.read.cameras;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    for (std::size_t j = i + 1; j < cameras.size(); ++j) {
      for (const std::string file : cameras[j].files) {
        if (std::find(cameras[i].files.begin(), cameras[i].files.end(), file) ==
            cameras[i].files.end()) {
          continue;
        }
        return finding{verdict::unusable, "",
                       words(set_words(set), ": ", name_of(file), " stands for camera ",
                             cameras[i].id, " and for camera ", cameras[j].id),
                       "give each camera a pattern, or a folder, of its own"};
      }
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<finding> series_remarks(const written_config& config) {
  std::vector<finding> found;
  std::size_t left = config.sets.size();
  const auto add = [&](const written_set& set, std::optional<finding> remark) {
    if (!remark) return;
    remark->where = place_text(config, place_of(set, "filename_patterns"));
    found.push_back(*remark);
  };
  for (const written_set& set : config.sets) {
    if (set.refused || set.read.cameras.empty()) continue;
    if (set.read.cameras.front().files.empty()) {
      --left;
      add(set, finding{verdict::doubtful, "",
                       words(set_words(set),
                             " is dropped, for no picture fits the pattern of its "
                             "first camera"),
                       "correct the pattern (it is case-sensitive and must fit the whole name) or "
                       "the folder, or take the set out"});
      continue;
    }
    add(set, unequal_lengths(set));
    add(set, same_picture(set));
    for (std::size_t k = 1; k < set.read.cameras.size(); ++k) {
      add(set, other_numbers(set, set.read.cameras.front(), set.read.cameras[k]));
    }
  }
  if (left == 0 && !config.sets.empty()) {
    found.push_back({verdict::unusable, config.file, "no set has any picture",
                     "correct base_directory, subdir or the patterns"});
  }
  return found;
}

}  // namespace ocpan

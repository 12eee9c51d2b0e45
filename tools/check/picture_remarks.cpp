#include "tools/check/picture_remarks.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr int most_names = 6;  // told in a sentence

std::string_view name_of(std::string_view path) {
  const std::size_t slash = path.rfind('\\');
  return slash == path.npos ? path : path.substr(slash + 1);
}

using picture_visitor = std::function<void(const cal_frame_set& set, std::size_t camera,
                                           const char* file, const picture_finding& finding)>;

// A path to be copied from the screen.
std::string slashed(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

// Visits every picture of every camera once, in the order of the sets.
void for_each_picture(const rig_pictures& pictures, const found_boards& boards,
                      const picture_visitor& visit) {
  std::set<std::pair<std::size_t, std::string>> visited;
  for (std::size_t set = 0; set < boards.size(); ++set) {
    const cal_frame_set& of = pictures.sets[set];
    for (std::size_t frame = 0; frame < boards[set].size(); ++frame) {
      for (std::size_t k = 0; k < of.camera_indices.size(); ++k) {
        const char* file = of.set_cameras[k].files[frame];
        if (!visited.insert({of.camera_indices[k], file}).second) continue;
        visit(of, of.camera_indices[k], file, boards[set][frame][k]);
      }
    }
  }
}

// Names as a sentence holds them, a few at most.
struct name_list {
  std::string text;
  int count = 0;

  void add(std::string_view name) {
    if (++count <= most_names) text += words(text.empty() ? "" : ", ", name);
  }
  std::string told() const {
    return count > most_names ? words(text, " and ", count - most_names, " more") : text;
  }
};

void add_damaged(std::vector<finding>& found, const rig_pictures& pictures,
                 const found_boards& boards) {
  for_each_picture(
      pictures, boards,
      [&](const cal_frame_set& set, std::size_t camera, const char* file,
          const picture_finding& finding) {
        const std::string where = words("set ", set.name, ", camera ", camera + 1);
        if (finding.cut_short) {
          found.push_back({verdict::doubtful, where,
                           words(slashed(file), " is cut short: the JPEG's end marker is missing"),
                           "copy it anew, or take it out with the others of its frame"});
        } else if (finding.state == picture_state::unreadable) {
          found.push_back({verdict::doubtful, where,
                           words(slashed(file), " can't be read as a picture"),
                           "copy it anew, or take it out with the others of its frame, which a "
                           "calibration passes over with it"});
        }
      });
}

void add_sizes(std::vector<finding>& found, const rig_pictures& pictures,
               const found_boards& boards, const std::vector<camera_pictures>& counts) {
  std::map<std::pair<std::size_t, std::pair<int, int>>, name_list> sizes;
  for_each_picture(pictures, boards,
                   [&](const cal_frame_set&, std::size_t camera, const char* file,
                       const picture_finding& finding) {
                     if (finding.state != picture_state::wrong_size) return;
                     sizes[{camera, {finding.width, finding.height}}].add(name_of(file));
                   });
  for (const auto& [key, names] : sizes) {
    const auto& [camera, size] = key;
    const camera_pictures& of = counts[camera];
    const camera_details& told = pictures.cameras[camera];
    const bool all = of.found + of.not_found == 0;
    const bool swapped = size.first == told.height && size.second == told.width;
    found.push_back({all ? verdict::unusable : verdict::doubtful, words("camera ", camera + 1),
                     words("pictures of ", size.first, " by ", size.second,
                           " where the configuration says ", told.width, " by ", told.height,
                           swapped ? ", as if the two were swapped: " : ": ", names.told()),
                     all && swapped ? "swap width and height of this camera"
                     : all          ? "correct width and height of this camera"
                                    : "take them out, or shoot all with one size"});
  }
}

void add_not_found(std::vector<finding>& found, const rig_pictures& pictures,
                   const found_boards& boards) {
  struct tally {
    int pictures = 0;
    name_list names;
  };
  std::map<std::pair<std::string, std::size_t>, tally> tallies;
  for_each_picture(pictures, boards,
                   [&](const cal_frame_set& set, std::size_t camera, const char* file,
                       const picture_finding& finding) {
                     tally& of = tallies[{set.name, camera}];
                     ++of.pictures;
                     if (finding.state == picture_state::not_found) of.names.add(name_of(file));
                   });
  for (const auto& [key, of] : tallies) {
    if (of.names.count == 0) continue;
    const bool most = 2 * of.names.count > of.pictures;
    found.push_back(
        {most ? verdict::doubtful : verdict::good,
         words("set ", key.first, ", camera ", key.second + 1),
         words("no board found in ", of.names.count, " of ", of.pictures, ": ", of.names.told()),
         most ? "see that board_shape counts the inner corners, that the whole board "
                "with its white margin is in the pictures, and that they are sharp"
              : "the whole board with its white margin must be in the picture, sharp "
                "and evenly lit"});
  }
}

}  // namespace

std::vector<camera_pictures> count_pictures(const rig_pictures& pictures,
                                            const found_boards& boards) {
  std::vector<camera_pictures> counts(pictures.cameras.size());
  for_each_picture(
      pictures, boards,
      [&](const cal_frame_set&, std::size_t camera, const char*, const picture_finding& finding) {
        camera_pictures& of = counts[camera];
        of.cut_short += finding.cut_short ? 1 : 0;
        switch (finding.state) {
          case picture_state::found:
            ++of.found;
            break;
          case picture_state::not_found:
            ++of.not_found;
            break;
          case picture_state::unreadable:
            ++of.unreadable;
            break;
          case picture_state::wrong_size:
            ++of.wrong_size;
            break;
        }
      });
  return counts;
}

std::vector<finding> picture_remarks(const rig_pictures& pictures, const found_boards& boards) {
  std::vector<finding> found;
  add_damaged(found, pictures, boards);
  add_sizes(found, pictures, boards, count_pictures(pictures, boards));
  add_not_found(found, pictures, boards);
  return found;
}

}  // namespace ocpan

#include "tools/check/pair_remarks.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>

#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr std::size_t most_frames = 12;  // told in a sentence

// The frames of one set in which two cameras don't go together.
struct pair_trouble {
  const pair_poses* pair = nullptr;
  std::vector<const pair_frame*> frames;
  std::size_t of = 0;  // frames that both saw
};

std::vector<pair_trouble> troubles_in(const std::vector<pair_poses>& pairs, std::size_t set,
                                      bool flips) {
  std::vector<pair_trouble> troubles;
  for (const pair_poses& pair : pairs) {
    if (pair.frames.size() < 2) continue;  // nothing to compare with
    pair_trouble trouble{&pair, {}, 0};
    for (const pair_frame& frame : pair.frames) {
      if (frame.set != set) continue;
      ++trouble.of;
      const bool flipped = frame.fit == pair_fit::flipped;
      if (frame.fit != pair_fit::fits && flipped == flips) trouble.frames.push_back(&frame);
    }
    if (!trouble.frames.empty()) troubles.push_back(trouble);
  }
  return troubles;
}

std::string frame_list(const std::set<std::size_t>& frames) {
  std::string text = frames.size() == 1 ? "frame " : "frames ";
  std::size_t told = 0;
  for (const std::size_t frame : frames) {
    if (told++ == most_frames) return text + words(" and ", frames.size() - most_frames, " more");
    text += words(told == 1 ? "" : ", ", frame);
  }
  return text;
}

// The camera that is in all of several troubles; none if there is only one trouble.
std::ptrdiff_t common_camera(const std::vector<pair_trouble>& troubles) {
  if (troubles.size() < 2) return -1;
  for (const std::size_t camera : {troubles[0].pair->first, troubles[0].pair->second}) {
    if (std::all_of(troubles.begin(), troubles.end(), [&](const pair_trouble& trouble) {
          return trouble.pair->first == camera || trouble.pair->second == camera;
        })) {
      return static_cast<std::ptrdiff_t>(camera);
    }
  }
  return -1;
}

std::set<std::size_t> frames_of(const std::vector<pair_trouble>& troubles) {
  std::set<std::size_t> frames;
  for (const pair_trouble& trouble : troubles) {
    for (const pair_frame* frame : trouble.frames) frames.insert(frame->frame);
  }
  return frames;
}

std::string picture_of(const cal_frame_set& set, std::size_t camera, std::size_t frame) {
  for (std::size_t k = 0; k < set.camera_indices.size(); ++k) {
    if (set.camera_indices[k] != camera || frame >= set.set_cameras[k].files.size()) continue;
    const std::string file = set.set_cameras[k].files[frame];
    return file.substr(file.rfind('\\') + 1);
  }
  return {};
}

// "cam1_03.png and cam2_03.png"
std::string pictures_of(const cal_frame_set& set, const pair_trouble& trouble) {
  const std::size_t frame = trouble.frames.front()->frame;
  return words(picture_of(set, trouble.pair->first, frame), " and ",
               picture_of(set, trouble.pair->second, frame));
}

finding flip_finding(const cal_frame_set& set, const std::vector<pair_trouble>& troubles,
                     std::ptrdiff_t camera) {
  const pair_trouble& first = troubles.front();
  const int quarters = first.frames.front()->quarter_turns;
  return {verdict::unusable, words("set ", set.name),
          words(camera >= 0 ? words("camera ", camera + 1, " and the others count")
                            : words("cameras ", first.pair->first + 1, " and ",
                                    first.pair->second + 1, " count"),
                " the board's corners from different ends, turned by ",
                quarters == 2 ? "a half" : "a quarter", ", in ", frame_list(frames_of(troubles)),
                " (the first: ", pictures_of(set, first), ")"),
          "take these frames out; a board with an odd and an even number of inner corners, such as "
          "9 by 6, can't flip"};
}

std::string shift_words(const rig_pictures& pictures, const found_boards& boards,
                        const pair_trouble& trouble, std::size_t set) {
  const series_shift shift = find_shift(pictures, boards, *trouble.pair, set);
  if (shift.frames == 0 || 2 * static_cast<std::size_t>(shift.fitting) < trouble.frames.size()) {
    return {};
  }
  const int by = std::abs(shift.frames);
  return words("; ", shift.fitting, " of them fit if the pictures of camera ",
               trouble.pair->second + 1, " are taken ", by, by == 1 ? " frame " : " frames ",
               shift.frames > 0 ? "later" : "earlier",
               ", so a picture may be missing or be too many");
}

finding apart_finding(const rig_pictures& pictures, const found_boards& boards, std::size_t set,
                      const std::vector<pair_trouble>& troubles, std::ptrdiff_t camera) {
  const cal_frame_set& of = pictures.sets[set];
  const pair_trouble& first = troubles.front();
  const std::set<std::size_t> frames = frames_of(troubles);
  const std::string who = camera >= 0
                              ? words("the pictures of camera ", camera + 1, " and of the others")
                              : words("the pictures of cameras ", first.pair->first + 1, " and ",
                                      first.pair->second + 1);
  const bool series = 2 * first.frames.size() > first.of && first.of > 2;
  return {frames.size() > 1 ? verdict::unusable : verdict::doubtful, words("set ", of.name),
          words(who,
                series ? " don't belong together, as if one series were shuffled, in "
                       : " don't show the board at the same moment in ",
                frame_list(frames), " (the first: ", pictures_of(of, first), ")",
                shift_words(pictures, boards, first, set)),
          "pictures are paired by their place in the sorted list; see that each series holds the "
          "same moments in the same order, or take these frames out"};
}

}  // namespace

std::vector<finding> pair_remarks(const rig_pictures& pictures, const found_boards& boards,
                                  const std::vector<pair_poses>& pairs) {
  std::vector<finding> found;
  for (std::size_t set = 0; set < pictures.sets.size(); ++set) {
    for (const bool flips : {true, false}) {
      const std::vector<pair_trouble> troubles = troubles_in(pairs, set, flips);
      const std::ptrdiff_t camera = common_camera(troubles);
      std::vector<std::vector<pair_trouble>> groups;
      if (camera >= 0) {
        groups.push_back(troubles);
      } else {
        for (const pair_trouble& trouble : troubles) groups.push_back({trouble});
      }
      for (const auto& group : groups) {
        found.push_back(flips ? flip_finding(pictures.sets[set], group, camera)
                              : apart_finding(pictures, boards, set, group, camera));
      }
    }
  }
  return found;
}

}  // namespace ocpan

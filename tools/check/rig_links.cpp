#include "tools/check/rig_links.h"

#include <algorithm>
#include <cstdlib>
#include <queue>
#include <string>

#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr int few_boards = 6;  // of a camera
constexpr int weak_joint = 3;  // boards between two cameras
constexpr int most_steps = 4;  // a placement averages ways over four boards and no longer ones

// The parts that hold together with at least so many boards between two cameras.
std::vector<std::vector<std::size_t>> parts_with(const std::vector<std::vector<int>>& shared,
                                                 int least) {
  std::vector<std::vector<std::size_t>> parts;
  std::vector<bool> placed(shared.size(), false);
  for (std::size_t start = 0; start < shared.size(); ++start) {
    if (placed[start]) continue;
    std::vector<std::size_t> part{start};
    placed[start] = true;
    for (std::size_t k = 0; k < part.size(); ++k) {
      for (std::size_t other = 0; other < shared.size(); ++other) {
        if (placed[other] || shared[part[k]][other] < least) continue;
        placed[other] = true;
        part.push_back(other);
      }
    }
    std::sort(part.begin(), part.end());
    parts.push_back(part);
  }
  return parts;
}

std::vector<int> steps_from_first(const std::vector<std::vector<int>>& shared) {
  std::vector<int> steps(shared.size(), -1);
  if (steps.empty()) return steps;
  steps[0] = 0;
  std::queue<std::size_t> open({0});
  for (; !open.empty(); open.pop()) {
    for (std::size_t other = 0; other < shared.size(); ++other) {
      if (steps[other] >= 0 || shared[open.front()][other] == 0) continue;
      steps[other] = steps[open.front()] + 1;
      open.push(other);
    }
  }
  return steps;
}

std::string camera_list(const std::vector<std::size_t>& cameras) {
  std::string text = cameras.size() == 1 ? "camera " : "cameras ";
  for (std::size_t k = 0; k < cameras.size(); ++k) {
    text += words(k == 0 ? "" : k + 1 == cameras.size() ? " and " : ", ", cameras[k] + 1);
  }
  return text;
}

bool holds(const cal_frame_set& set, std::size_t camera) {
  return std::find(set.camera_indices.begin(), set.camera_indices.end(), camera) !=
         set.camera_indices.end();
}

// What would join two parts: a set that is there but shows no board in both, or the two
// cameras of the parts whose numbers are nearest.
std::string missing_link(const rig_pictures& pictures, const std::vector<std::size_t>& part,
                         const std::vector<std::size_t>& other) {
  std::size_t first = part.front(), second = other.front();
  for (const std::size_t a : part) {
    for (const std::size_t b : other) {
      const auto gap = [](std::size_t i, std::size_t j) { return i < j ? j - i : i - j; };
      if (gap(a, b) < gap(first, second)) first = a, second = b;
      for (const cal_frame_set& set : pictures.sets) {
        if (!holds(set, a) || !holds(set, b)) continue;
        return words("set ", set.name, " has pictures of ", camera_list({a, b}),
                     ", but in none of its frames the board is found by both; shoot it anew, with "
                     "the whole board in both pictures");
      }
    }
  }
  return words("shoot a set with the board before ", camera_list({first, second}),
               " at once, or before other cameras of the two parts");
}

bool all_explained(const std::vector<std::size_t>& part, const std::vector<bool>& explained) {
  return std::all_of(part.begin(), part.end(), [&](std::size_t camera) {
    return camera < explained.size() && explained[camera];
  });
}

void add_counts(std::vector<finding>& found, const rig_links& links,
                const std::vector<bool>& explained) {
  for (std::size_t camera = 0; camera < links.shared.size(); ++camera) {
    const int boards = links.shared[camera][camera];
    if (boards >= few_boards || (boards == 0 && all_explained({camera}, explained))) continue;
    found.push_back({boards == 0 ? verdict::unusable : verdict::doubtful,
                     words("camera ", camera + 1),
                     boards == 0 ? std::string("no board was found in any picture")
                                 : words("the board was found in ", boards,
                                         boards == 1 ? " picture only" : " pictures only"),
                     boards == 0 ? "see that board_shape counts the inner corners, and that the "
                                   "whole board with a white margin is in the pictures"
                                 : "shoot ten or more, spread over the picture and tilted"});
  }
}

void add_weak_joints(std::vector<finding>& found, const rig_links& links) {
  const auto firm = parts_with(links.shared, weak_joint);
  if (firm.size() == links.parts.size()) return;
  std::vector<std::size_t> part_of(links.shared.size());
  for (std::size_t part = 0; part < firm.size(); ++part) {
    for (const std::size_t camera : firm[part]) part_of[camera] = part;
  }
  for (std::size_t a = 0; a < links.shared.size(); ++a) {
    for (std::size_t b = a + 1; b < links.shared.size(); ++b) {
      const int boards = links.shared[a][b];
      if (boards == 0 || part_of[a] == part_of[b]) continue;
      found.push_back({verdict::doubtful, camera_list({a, b}),
                       words("only ", boards, boards == 1 ? " board joins" : " boards join",
                             " these two cameras, and nothing else their parts of the rig"),
                       "shoot more boards before both, five or more"});
    }
  }
}

}  // namespace

rig_links find_links(std::size_t cameras, const std::vector<seen_board>& boards) {
  rig_links links;
  links.shared.assign(cameras, std::vector<int>(cameras, 0));
  for (const seen_board& board : boards) {
    for (const std::size_t a : board.cameras) {
      for (const std::size_t b : board.cameras) ++links.shared[a][b];
    }
  }
  links.parts = parts_with(links.shared, 1);
  links.steps = steps_from_first(links.shared);
  return links;
}

std::vector<finding> link_remarks(const rig_pictures& pictures, const rig_links& links,
                                  const std::vector<bool>& explained) {
  std::vector<finding> found;
  add_counts(found, links, explained);
  for (std::size_t part = 1; part < links.parts.size(); ++part) {
    if (all_explained(links.parts[0], explained) || all_explained(links.parts[part], explained)) {
      continue;
    }
    found.push_back({verdict::unusable, "rig",
                     words("the rig falls apart: no board was seen by ",
                           camera_list(links.parts[part]), " together with ",
                           links.parts.size() == 2 ? camera_list(links.parts[0]) : "another camera",
                           "; a calibration would leave ",
                           links.parts[part].size() == 1 ? "it" : "them", " unturned"),
                     missing_link(pictures, links.parts[0], links.parts[part])});
  }
  add_weak_joints(found, links);
  for (std::size_t camera = 0; camera < links.steps.size(); ++camera) {
    if (links.steps[camera] <= most_steps) continue;
    found.push_back({verdict::unusable, words("camera ", camera + 1),
                     words("it is ", links.steps[camera],
                           " shared boards away from camera 1, and a calibration follows ",
                           most_steps, " at most and leaves it unturned"),
                     "shoot boards that it shares with cameras nearer to camera 1, or begin the "
                     "numbers in the middle of the rig"});
  }
  return found;
}

}  // namespace ocpan

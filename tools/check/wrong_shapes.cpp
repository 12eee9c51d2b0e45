#include "tools/check/wrong_shapes.h"

#include <algorithm>
#include <map>
#include <string>

#include "tools/check/words.h"
#include "tools/init/guess_board.h"

namespace ocpan {
namespace {

constexpr std::size_t most_samples = 3;  // pictures of a camera

// A camera and the board told for it.
using told_board = std::pair<std::size_t, std::pair<int, int>>;

std::map<told_board, std::vector<std::string>> pictures_by_board(const rig_pictures& pictures) {
  std::map<told_board, std::vector<std::string>> by_board;
  for (const cal_frame_set& set : pictures.sets) {
    for (std::size_t k = 0; k < set.camera_indices.size(); ++k) {
      auto& files = by_board[{set.camera_indices[k], {set.board_width, set.board_height}}];
      const auto& more = set.set_cameras[k].files;
      files.insert(files.end(), more.begin(), more.end());
    }
  }
  return by_board;
}

std::vector<std::string> samples_of(const std::vector<std::string>& files) {
  const std::size_t count = std::min(files.size(), most_samples);
  std::vector<std::string> samples;
  for (std::size_t k = 0; k < count; ++k) samples.push_back(files[k * files.size() / count]);
  return samples;
}

bool holds_told_board(const std::vector<std::string>& samples, std::pair<int, int> told) {
  return std::any_of(samples.begin(), samples.end(), [&](const std::string& sample) {
    return boards_of_shape({sample}, told) > 0;
  });
}

// The board that most of the samples hold; one that was found before is tried first.
std::pair<int, int> likely_board(const std::vector<std::string>& samples,
                                 const std::vector<wrong_shape>& before) {
  if (!before.empty()) {
    const std::pair<int, int> likely = before.back().likely;
    const int found = boards_of_shape(samples, likely);
    if (2 * static_cast<std::size_t>(found) > samples.size()) return likely;
  }
  return guess_board(samples);
}

}  // namespace

std::vector<wrong_shape> find_wrong_shapes(const rig_pictures& pictures) {
  std::vector<wrong_shape> shapes;
  for (const auto& [board, files] : pictures_by_board(pictures)) {
    const auto& [camera, told] = board;
    const std::vector<std::string> samples = samples_of(files);
    if (samples.empty() || holds_told_board(samples, told)) continue;
    const std::pair<int, int> likely = likely_board(samples, shapes);
    const bool same = likely == told || likely == std::pair(told.second, told.first);
    if (likely.first == 0 || same) continue;
    shapes.push_back({camera, told, likely});
  }
  return shapes;
}

std::vector<finding> shape_remarks(const std::vector<wrong_shape>& shapes) {
  std::vector<finding> found;
  for (const auto& [camera, told, likely] : shapes) {
    found.push_back({verdict::unusable, words("camera ", camera + 1),
                     words("the board of these pictures looks like ", likely.first, " by ",
                           likely.second, ", and board_shape says ", told.first, " by ",
                           told.second, ", so no board was looked for"),
                     words("write board_shape: [", likely.first, ", ", likely.second,
                           "], if that is the number of inner corners")});
  }
  return found;
}

}  // namespace ocpan

#include "tools/check/repeated_frames.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr double most_of_a_square = 0.25;

bool found_in(const picture_finding& finding) { return finding.state == picture_state::found; }

// The mean side of the squares along the board's rows, pixels.
double square_side(const Eigen::Matrix2Xd& corners, int board_width) {
  double sum = 0;
  int sides = 0;
  for (Eigen::Index k = 0; k + 1 < corners.cols(); ++k) {
    if ((k + 1) % board_width == 0) continue;
    sum += (corners.col(k + 1) - corners.col(k)).norm();
    ++sides;
  }
  return sides == 0 ? 0 : sum / sides;
}

bool same_view(const picture_finding& a, const picture_finding& b, int board_width) {
  if (found_in(a) != found_in(b)) return false;
  if (!found_in(a)) return true;
  if (a.corners.cols() != b.corners.cols() || a.corners.cols() == 0) return false;
  const double rms = std::sqrt((a.corners - b.corners).colwise().squaredNorm().mean());
  return rms < most_of_a_square * square_side(a.corners, board_width);
}

bool same_frame(const std::vector<picture_finding>& a, const std::vector<picture_finding>& b,
                int board_width) {
  if (std::none_of(a.begin(), a.end(), found_in)) return false;
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](const auto& x, const auto& y) { return same_view(x, y, board_width); });
}

}  // namespace

std::vector<repeated_frame> find_repeated(const found_boards& boards,
                                          const rig_pictures& pictures) {
  std::vector<repeated_frame> repeated;
  for (std::size_t set = 0; set < boards.size(); ++set) {
    std::vector<std::size_t> own;  // frames that repeat no other
    for (std::size_t frame = 0; frame < boards[set].size(); ++frame) {
      const auto earlier = std::find_if(own.begin(), own.end(), [&](std::size_t other) {
        return same_frame(boards[set][frame], boards[set][other], pictures.sets[set].board_width);
      });
      if (earlier == own.end()) {
        own.push_back(frame);
      } else {
        repeated.push_back({set, frame, *earlier});
      }
    }
  }
  return repeated;
}

std::vector<finding> repeat_remarks(const rig_pictures& pictures, const found_boards& boards,
                                    const std::vector<repeated_frame>& repeated) {
  std::vector<finding> found;
  for (std::size_t set = 0; set < boards.size(); ++set) {
    std::size_t count = 0;
    std::string frames;
    for (const repeated_frame& repeat : repeated) {
      if (repeat.set != set) continue;
      ++count;
      frames += words(frames.empty() ? "" : ", ", repeat.frame, " (as ", repeat.earlier, ")");
    }
    if (count == 0) continue;
    found.push_back(
        {2 * count > boards[set].size() ? verdict::doubtful : verdict::good,
         words("set ", pictures.sets[set].name),
         words("frames that show the board nearly where an earlier one has it: ", frames),
         "they add little; move the board between two pictures"});
  }
  return found;
}

}  // namespace ocpan

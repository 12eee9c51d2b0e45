#pragma once

#include <array>
#include <string>
#include <vector>

#include "tools/boards/seen_boards.h"
#include "tools/check/finding.h"

namespace ocpan {

inline constexpr std::size_t coverage_columns = 16;
inline constexpr std::size_t coverage_rows = 9;

// Where the corners of all boards fall in one camera's picture.
struct camera_coverage {
  std::array<std::array<int, coverage_columns>, coverage_rows> corners = {};   // per cell
  std::array<std::array<bool, coverage_columns>, coverage_rows> in_view = {};  // lens sees it
  double share = 0;             // of the cells in view that hold a corner
  double farthest_degrees = 0;  // of a corner from the lens's axis, by the lens guessed at
};

// Per camera.
[[nodiscard]] std::vector<camera_coverage> find_coverage(const rig_pictures& pictures,
                                                         const std::vector<seen_board>& boards);

// A line per row of cells: "." for no corner, 1 to 9, then a letter for each ten more from
// a (10 to 19) to z; a blank where the lens sees nothing.
[[nodiscard]] std::vector<std::string> coverage_map(const camera_coverage& coverage);

[[nodiscard]] std::vector<finding> coverage_remarks(const rig_pictures& pictures,
                                                    const std::vector<camera_coverage>& coverage);

}  // namespace ocpan

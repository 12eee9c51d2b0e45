#pragma once

#include <cstddef>
#include <vector>

#include "tools/boards/seen_boards.h"
#include "tools/check/finding.h"

namespace ocpan {

// Which cameras saw boards together.
struct rig_links {
  std::vector<std::vector<int>> shared;         // [camera][camera]; the diagonal is all boards
  std::vector<std::vector<std::size_t>> parts;  // cameras joined by boards, ascending
  std::vector<int> steps;                       // from camera 0, over shared boards; -1 for none
};

[[nodiscard]] rig_links find_links(std::size_t cameras, const std::vector<seen_board>& boards);

// Cameras with too few boards, parts that nothing joins with the missing link, joints of too
// few boards, cameras too many steps from the first. Nothing about cameras without a board that
// are explained elsewhere.
[[nodiscard]] std::vector<finding> link_remarks(const rig_pictures& pictures,
                                                const rig_links& links,
                                                const std::vector<bool>& explained = {});

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <vector>

#include "tools/boards/found_boards.h"
#include "tools/check/finding.h"

namespace ocpan {

// A frame that shows the board nearly where an earlier frame of its set shows it.
struct repeated_frame {
  std::size_t set = 0;
  std::size_t frame = 0;
  std::size_t earlier = 0;  // itself no repeat
};

// Frames whose corners lie within a quarter of a square of those of an earlier one, in all
// cameras that saw the board, which must be the same cameras.
[[nodiscard]] std::vector<repeated_frame> find_repeated(const found_boards& boards,
                                                        const rig_pictures& pictures);

[[nodiscard]] std::vector<finding> repeat_remarks(const rig_pictures& pictures,
                                                  const found_boards& boards,
                                                  const std::vector<repeated_frame>& repeated);

}  // namespace ocpan

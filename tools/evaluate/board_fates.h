#pragma once

#include <vector>

#include "model/parameters.h"
#include "tools/boards/seen_boards.h"
#include "tools/evaluate/evaluation.h"

namespace ocpan {

// Fits every board to the cameras that saw it and sorts out those that can't be told from a
// fault of their pictures. What is off alike in all boards of some cameras stays: that is
// the calibration's.
//
// Gives one per seen board, in their order.
std::vector<evaluated_board> fitted_boards(const rig& models,
                                           const std::vector<seen_board>& boards);

}  // namespace ocpan

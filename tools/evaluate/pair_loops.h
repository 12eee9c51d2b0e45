#pragma once

#include <cstddef>
#include <vector>

#include "model/parameters.h"
#include "tools/evaluate/evaluation.h"

namespace ocpan {

// The fundamental loops of the graph of pairs that have poses of their own, each by the
// shortest way back, and where going round them ends.
std::vector<pair_loop> pair_loops(const rig& models, const std::vector<evaluated_pair>& pairs);

// For each camera the number of its part of the rig, the parts linked by pairs; parts are
// counted from 0 by their first cameras.
std::vector<std::size_t> linked_parts(std::size_t cameras,
                                      const std::vector<evaluated_pair>& pairs);

}  // namespace ocpan

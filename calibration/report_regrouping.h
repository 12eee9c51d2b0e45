#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "src/run_report.h"

namespace ocpan {

// Turns a report's entries from one per view group into one per set and prints how many
// boards each group holds.
//
//   groups_per_set   how many groups, in order, belong to each set; a set with none gets
//                    entries of -1
//   set_cameras      per set, its camera indices
void regroup_by_set(run_report& report, const std::vector<std::size_t>& groups_per_set,
                    const std::vector<std::vector<std::uint64_t>>& set_cameras);

}  // namespace ocpan

#pragma once

#include <cstdint>
#include <vector>

namespace ocpan::faults {

// Which of a run's calls to let fail, each counted from 1: all if there are at most `most`.
// Otherwise the first, the second and the last call of every stack that leads to one, as far
// as `most` goes, and then calls in even steps.
std::vector<long> planned_faults(const std::vector<std::uint64_t>& stacks, std::size_t most);

}  // namespace ocpan::faults

#include "tests/faults/fault_plan.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <set>
#include <unordered_map>

namespace ocpan::faults {
namespace {

// A number for each of count items, in even steps.
std::size_t even_step(std::size_t k, std::size_t count, std::size_t all) { return k * all / count; }

// The first call of each stack, then the last ones, then the second ones.
std::vector<long> calls_by_stack(const std::vector<std::uint64_t>& stacks) {
  struct occurrences {
    long first = 0, second = 0, last = 0;
  };
  std::unordered_map<std::uint64_t, occurrences> seen;
  std::vector<std::uint64_t> order;
  for (std::size_t k = 0; k < stacks.size(); ++k) {
    const long number = static_cast<long>(k) + 1;
    occurrences& of = seen[stacks[k]];
    if (of.first == 0) order.push_back(stacks[k]);
    (of.first == 0 ? of.first : of.second == 0 ? of.second : of.last) = number;
  }
  std::vector<long> calls;
  for (const auto which : {&occurrences::first, &occurrences::last, &occurrences::second}) {
    for (const std::uint64_t stack : order) {
      if (const long number = seen[stack].*which) calls.push_back(number);
    }
  }
  return calls;
}

}  // namespace

std::vector<long> planned_faults(const std::vector<std::uint64_t>& stacks, std::size_t most) {
  const std::size_t all = stacks.size();
  if (all <= most) {
    std::vector<long> every(all);
    std::iota(every.begin(), every.end(), 1L);
    return every;
  }
  const std::vector<long> by_stack = calls_by_stack(stacks);
  std::set<long> chosen;
  if (by_stack.size() <= most) {
    chosen.insert(by_stack.begin(), by_stack.end());
    const std::size_t left = most - by_stack.size();
    for (std::size_t k = 0; k < left; ++k) {
      chosen.insert(static_cast<long>(even_step(k, left, all)) + 1);
    }
  } else {
    for (std::size_t k = 0; k < most; ++k) {
      chosen.insert(by_stack[even_step(k, most, by_stack.size())]);
    }
  }
  return {chosen.begin(), chosen.end()};
}

}  // namespace ocpan::faults

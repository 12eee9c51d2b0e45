#pragma once

#include <cstddef>
#include <functional>

namespace ocpan {

// How many processors the system offers this process; 0 when it doesn't tell.
unsigned processor_count();

// Runs body(0) to body(count - 1), each on a thread of its own, and waits for all of them.
// A thread that can't be started is left out: its body never runs. What a body throws is
// thrown again here once all have ended, the lowest index first.
//
// Gives false, without having started anything, when there is no memory for the threads'
// handles.
[[nodiscard]] bool run_workers(std::size_t count, const std::function<void(std::size_t)>& body);

}  // namespace ocpan

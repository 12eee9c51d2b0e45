#pragma once

#include <atomic>
#include <cstddef>

namespace ocpan::testing {

// This test program's memory, which may be made to fail; failing_memory_test.cpp replaces the
// operators.

// Asked at each allocation of an array, on whichever thread: true fails it. Null: none fails.
using memory_question = bool (*)(std::size_t size);
inline std::atomic<memory_question> array_memory_fails = nullptr;

// While it lives the allocations of arrays fail of which a question says so.
class failing_array_memory {
 public:
  explicit failing_array_memory(memory_question fails) { array_memory_fails = fails; }
  ~failing_array_memory() { array_memory_fails = nullptr; }
  failing_array_memory(const failing_array_memory&) = delete;
  failing_array_memory& operator=(const failing_array_memory&) = delete;
};

// Counts down to the allocation of an object, on this thread, that is to fail; below 0: none.
inline thread_local int objects_until_failure = -1;

}  // namespace ocpan::testing

#include "tests/faults/call_stacks.h"

#include <algorithm>
#include <atomic>
#include <execinfo.h>
#include <sys/mman.h>

namespace ocpan::faults {
namespace {

constexpr int own_frames = 2;  // the walk and who asked for it
constexpr std::size_t slots = std::size_t{1} << 20;

thread_local bool walking = false;

std::uint64_t* stack_hashes = nullptr;
long hash_capacity = 0;

// An open hash table with linear probing in pages of its own.
kept_resource* table = nullptr;
std::atomic_flag table_lock = ATOMIC_FLAG_INIT;

struct table_guard {
  table_guard() {
    while (table_lock.test_and_set(std::memory_order_acquire)) {
    }
  }
  ~table_guard() { table_lock.clear(std::memory_order_release); }
  table_guard(const table_guard&) = delete;
  table_guard& operator=(const table_guard&) = delete;
};

std::size_t home_of(std::uint64_t what, bool is_memory) {
  return (what * 0x9E3779B97F4A7C15ull + (is_memory ? 1 : 0)) >> 44;
}

constexpr std::uint64_t removed = ~std::uint64_t{0};

}  // namespace

call_stack calling_stack() {
  std::array<void*, call_stack{}.size() + own_frames> frames{};
  walking = true;
  backtrace(frames.data(), static_cast<int>(frames.size()));
  walking = false;
  call_stack outer{};
  std::copy(frames.begin() + own_frames, frames.end(), outer.begin());
  return outer;
}

void warm_stack_walk() { static_cast<void>(calling_stack()); }
bool inside_stack_walk() { return walking; }

void record_stack(long number) {
  if (!stack_hashes || number > hash_capacity) return;
  std::uint64_t hash = 14695981039346656037ull;
  for (void* frame : calling_stack()) {
    hash = (hash ^ reinterpret_cast<std::uintptr_t>(frame)) * 1099511628211ull;
  }
  stack_hashes[number - 1] = hash;
}

void record_stacks(std::uint64_t* hashes, long capacity) {
  warm_stack_walk();
  stack_hashes = hashes;
  hash_capacity = capacity;
}

void remember(std::uint64_t what, bool is_memory) {
  if (!table || walking) return;
  const auto stack = calling_stack();
  const table_guard guard;
  std::size_t slot = home_of(what, is_memory);
  while (table[slot].what != 0 && table[slot].what != removed) slot = (slot + 1) % slots;
  table[slot] = {what, is_memory, stack};
}

void forget(std::uint64_t what, bool is_memory) {
  if (!table || walking) return;
  const table_guard guard;
  std::size_t slot = home_of(what, is_memory);
  for (; table[slot].what != 0; slot = (slot + 1) % slots) {
    if (table[slot].what == what && table[slot].is_memory == is_memory) {
      table[slot].what = removed;
      return;
    }
  }
}

void begin_tracking() {
  warm_stack_walk();
  void* pages = mmap(nullptr, slots * sizeof(kept_resource), PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  table = pages == MAP_FAILED ? nullptr : static_cast<kept_resource*>(pages);
}

long end_tracking(kept_resource* kept, long capacity) {
  kept_resource* const ended = table;
  table = nullptr;
  if (!ended) return 0;
  long count = 0;
  for (std::size_t slot = 0; slot < slots && count < capacity; ++slot) {
    if (ended[slot].what != 0 && ended[slot].what != removed) kept[count++] = ended[slot];
  }
  munmap(ended, slots * sizeof(kept_resource));
  return count;
}

}  // namespace ocpan::faults

// malloc and its kin, which the C++ library's operator new calls too.
#include "tests/faults/interposed_memory.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <malloc.h>

#include "tests/faults/call_stacks.h"
#include "tests/faults/fault_orders.h"

// What lies under the C library's own definitions.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace ocpan::faults {
namespace {

std::atomic<long> live_blocks = 0;
std::atomic<long> live_bytes = 0;

std::uint64_t address(const void* block) { return reinterpret_cast<std::uintptr_t>(block); }

void* taken(void* block) {
  if (!block) return nullptr;
  live_blocks.fetch_add(1, std::memory_order_relaxed);
  live_bytes.fetch_add(static_cast<long>(malloc_usable_size(block)), std::memory_order_relaxed);
  remember(address(block), true);
  return block;
}

void given_back(void* block) {
  if (!block) return;
  live_blocks.fetch_sub(1, std::memory_order_relaxed);
  live_bytes.fetch_sub(static_cast<long>(malloc_usable_size(block)), std::memory_order_relaxed);
  forget(address(block), true);
}

bool refused() {
  if (!must_fail(call_kind::allocate)) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

memory_balance balance() { return {live_blocks, live_bytes}; }

}  // namespace ocpan::faults

using namespace ocpan::faults;

extern "C" {

void* malloc(std::size_t size) { return refused() ? nullptr : taken(__libc_malloc(size)); }

void* calloc(std::size_t count, std::size_t size) {
  return refused() ? nullptr : taken(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
  if (size != 0 && refused()) return nullptr;
  given_back(block);
  void* const moved = __libc_realloc(block, size);
  if (!moved && size != 0) taken(block);
  return taken(moved);
}

void* memalign(std::size_t alignment, std::size_t size) {
  return refused() ? nullptr : taken(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* const aligned = memalign(alignment, size);
  if (!aligned) return ENOMEM;
  *block = aligned;
  return 0;
}

void free(void* block) {
  given_back(block);
  __libc_free(block);
}

}  // extern "C"

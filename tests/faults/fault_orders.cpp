#include "tests/faults/fault_orders.h"

#include <atomic>
#include <dlfcn.h>

#include "tests/faults/call_stacks.h"

namespace ocpan::faults {
namespace {

constexpr int none = -1;

std::atomic<int> armed_kind = none;
std::atomic<long> calls = 0;
std::atomic<long> failures = 0;
long first_failure = 0;
bool lasting_failure = false;
call_stack* first_failed = nullptr;

}  // namespace

bool must_fail(call_kind kind) {
  if (armed_kind.load(std::memory_order_relaxed) != static_cast<int>(kind)) return false;
  if (inside_stack_walk()) return false;
  const long number = ++calls;
  record_stack(number);
  const bool fails =
      first_failure > 0 && (lasting_failure ? number >= first_failure : number == first_failure);
  if (fails && ++failures == 1 && first_failed) *first_failed = calling_stack();
  return fails;
}

void* next_definition(const char* name) { return dlsym(RTLD_NEXT, name); }

void arm(call_kind kind, long nth, bool lasting) {
  warm_stack_walk();
  calls = 0;
  failures = 0;
  first_failure = nth;
  lasting_failure = lasting;
  armed_kind = static_cast<int>(kind);
}

void disarm() { armed_kind = none; }
long armed_calls() { return calls; }
long made_failures() { return failures; }
void tell_first_failure(call_stack* stack) { first_failed = stack; }

}  // namespace ocpan::faults

// What the preloaded library exports beside the functions it stands in front of.
#include "tests/faults/call_stacks.h"
#include "tests/faults/fault_orders.h"
#include "tests/faults/interposed_memory.h"

using namespace ocpan::faults;

extern "C" const fault_controls* ocpan_fault_controls() {
  static constexpr fault_controls controls = {
      arm,     disarm,        armed_calls,    made_failures, tell_first_failure,
      balance, record_stacks, begin_tracking, end_tracking};
  return &controls;
}

#pragma once

#include "tests/faults/fault_controls.h"

namespace ocpan::faults {

// Counts a call and tells whether it has to fail. Safe on any thread; allocates nothing.
bool must_fail(call_kind kind);

// The next definition of a function behind this library's own.
void* next_definition(const char* name);

void arm(call_kind kind, long nth, bool lasting);
void disarm();
long armed_calls();
long made_failures();
void tell_first_failure(call_stack* stack);

}  // namespace ocpan::faults

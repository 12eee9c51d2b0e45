#pragma once

#include "tests/faults/fault_controls.h"

namespace ocpan::faults {

// The stack that led into this library's interposed function.
call_stack calling_stack();

// Makes the first walk, which allocates. Later ones don't.
void warm_stack_walk();
// Whether this thread is walking its stack, whose calls are not the program's.
bool inside_stack_walk();

// Stores the hash of the stack of an armed call if that is asked for.
void record_stack(long number);
void record_stacks(std::uint64_t* hashes, long capacity);

// Remembers and forgets resources while tracking is on.
void remember(std::uint64_t what, bool is_memory);
void forget(std::uint64_t what, bool is_memory);
void begin_tracking();
long end_tracking(kept_resource* kept, long capacity);

}  // namespace ocpan::faults

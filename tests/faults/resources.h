#pragma once

#include "tests/faults/fault_controls.h"

namespace ocpan::faults {

// The controls of the library that this process was started with; null without it.
const fault_controls* controls();

// What this process holds.
struct resources {
  memory_balance memory;
  long descriptors = 0;
  long threads = 0;
};
resources resources_now();
resources operator-(const resources& after, const resources& before);
// Whether a difference is none: memory may be less.
bool nothing_kept(const resources& kept);

// What is resident in memory, kilobytes.
long resident_kilobytes();

}  // namespace ocpan::faults

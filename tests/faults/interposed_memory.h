#pragma once

#include "tests/faults/fault_controls.h"

namespace ocpan::faults {

// What all threads took from malloc and its kin and didn't give back.
memory_balance balance();

}  // namespace ocpan::faults

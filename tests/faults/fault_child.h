#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/faults/export_jobs.h"
#include "tests/faults/fault_controls.h"
#include "tests/faults/folder_state.h"

namespace ocpan::faults {

struct fault {
  call_kind kind = call_kind::open;
  long nth = 0;
  bool lasting = false;
};

// How a run with a fault ended.
struct fault_outcome {
  bool fired = false;
  bool survived = false;  // it came back, in time
  int code = 0;
  long calls = 0;
  bool foreign = false;  // what went wrong, or was kept, is another library's doing
  std::string problem;   // empty if all is well
  std::string details;   // for a person
};

// Each of these runs the job in a child of this process, whose working folder is the job's.
// The run without a fault:
bool run_without_fault(good_run& good, const export_job& job);
// The stacks of all calls of a kind, in the order of the calls.
std::vector<std::uint64_t> call_stacks(const export_job& job, const good_run& good, call_kind kind);
// A run with one.
fault_outcome run_with_fault(const export_job& job, const good_run& good, const fault& which);

// A run in this process, its printing thrown away, so that what is made only once is made.
void warm_up(const export_job& job, const good_run& good);

}  // namespace ocpan::faults

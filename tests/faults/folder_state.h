#pragma once

#include <map>
#include <string>

#include "tests/faults/export_jobs.h"

namespace ocpan::faults {

// The bytes of all files of a folder but those under "tmp", by name.
using folder_state = std::map<std::string, std::string>;
folder_state state_of_working_folder();

// What a run without a fault leaves and prints.
struct good_run {
  folder_state inputs;  // the folder before it
  folder_state after;
  std::string printed;
};

// Puts the working folder back to its inputs, with an older text under each output's and
// report's name.
void put_back(const export_job& job, const good_run& good);

// What is wrong with the folder that a run with a fault left; empty if nothing is:
//
//   - a success has written its outputs, bit for bit, or printed that an input was left out
//   - a failure has left each output as it was, whole, or not at all, and one at most of the
//     last kind
//   - no report is cut short, no input changed, no other file there
std::string folder_problem(const export_job& job, const good_run& good, int code,
                           const std::string& printed);

}  // namespace ocpan::faults

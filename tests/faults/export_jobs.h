#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ocpan::faults {

// A small run of one export, in the working folder, where its inputs are.
struct export_job {
  std::string name;
  std::function<int()> run;
  std::vector<std::string> outputs;    // what the call is for
  std::vector<std::string> reports;    // what may be lost without a word
  bool loses_output_silently = false;  // the overlay's, whose writing nobody tests
  bool writes_last = false;            // and so no output beside a failure
  bool prints_on_success = false;      // and so can tell of an input that was left out
};

// Makes the inputs of all jobs, each in a folder of its job's name. Gives an error text, empty
// if all is well.
[[nodiscard]] std::string write_job_inputs(const std::string& folder);

std::vector<export_job> export_jobs();

}  // namespace ocpan::faults

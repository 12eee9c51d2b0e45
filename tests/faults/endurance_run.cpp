// Calls each export many times in one process and watches what the process holds; then lets
// two processes work at once and compares what they write with what one wrote alone.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/faults/export_jobs.h"
#include "tests/faults/folder_state.h"
#include "tests/faults/preload.h"
#include "tests/faults/quiet_output.h"
#include "tests/faults/resources.h"
#include "tests/support/temp_folder.h"

namespace ocpan::faults {
namespace {

namespace fs = std::filesystem;

constexpr int calls_to_settle = 10;
constexpr long most_resident_growth = 4096;  // kilobytes: how far the allocator reaches varies

// Whether what the calls after the first ten left behind is less than a block a call. How many
// blocks the C library keeps for the threads that ended depends on how their ends fell together.
bool nothing_grows(resources kept, int calls) {
  if (kept.memory.blocks < calls) kept.memory = {};
  return nothing_kept(kept);
}

// Whether calls after the first ten hold no more than those did. Prints a line.
bool endures(const export_job& job, int calls) {
  resources kept;
  long kilobytes = 0;
  int failures = 0;
  {
    const quiet_output quiet;
    for (int call = 0; call < calls; ++call) {
      if (call == calls_to_settle) {
        kept = resources_now();
        kilobytes = resident_kilobytes();
      }
      if (job.run() != 0) ++failures;
    }
    kept = resources_now() - kept;
    kilobytes = resident_kilobytes() - kilobytes;
  }
  const bool good = failures == 0 && nothing_grows(kept, calls - calls_to_settle) &&
                    kilobytes < most_resident_growth;
  std::printf(
      "%-13s %4d calls, %d failed; since call %d: %+ld blocks, %+ld bytes, %+ld kB resident, "
      "%+ld descriptors, %+ld threads%s\n",
      job.name.c_str(), calls, failures, calls_to_settle, kept.memory.blocks, kept.memory.bytes,
      kilobytes, kept.descriptors, kept.threads, good ? "" : "  PROBLEM");
  std::fflush(stdout);
  return good;
}

// Runs all jobs, each in its folder. Gives whether all succeed.
bool run_jobs(const std::string& folder) {
  const quiet_output quiet;
  bool good = true;
  for (const export_job& job : export_jobs()) {
    fs::current_path(fs::path(folder) / job.name);
    good = job.run() == 0 && good;
  }
  return good;
}

// What all jobs left in a folder, by job.
std::vector<folder_state> outputs_in(const std::string& folder) {
  std::vector<folder_state> states;
  for (const export_job& job : export_jobs()) {
    fs::current_path(fs::path(folder) / job.name);
    folder_state& outputs = states.emplace_back();
    for (const auto& [name, bytes] : state_of_working_folder()) {
      const bool is_output = std::count(job.outputs.begin(), job.outputs.end(), name) +
                                 std::count(job.reports.begin(), job.reports.end(), name) >
                             0;
      if (is_output) outputs[name] = bytes;
    }
  }
  return states;
}

bool two_processes_agree(const std::string& alone) {
  const std::vector<folder_state> expected = outputs_in(alone);
  const testing::temp_folder first, second;
  const std::array<std::string, 2> folders = {first.path().string(), second.path().string()};
  std::array<pid_t, 2> children{};
  for (std::size_t k = 0; k < 2; ++k) {
    if (!write_job_inputs(folders[k]).empty()) return false;
  }
  for (std::size_t k = 0; k < 2; ++k) {
    children[k] = fork();
    if (children[k] == 0) _exit(run_jobs(folders[k]) ? 0 : 1);
  }
  bool good = true;
  for (std::size_t k = 0; k < 2; ++k) {
    int status = -1;
    waitpid(children[k], &status, 0);
    const std::vector<folder_state> found = outputs_in(folders[k]);
    good = good && status == 0 && found == expected;
  }
  fs::current_path("/");
  std::printf("Two processes at once %s what one writes\n", good ? "write" : "DON'T write");
  return good;
}

int run(int calls) {
  const testing::temp_folder folder;
  const std::string path = folder.path().string();
  if (const std::string problem = write_job_inputs(path); !problem.empty()) {
    std::printf("The inputs can't be written: %s\n", problem.c_str());
    return 1;
  }
  bool good = run_jobs(path) && two_processes_agree(path);
  for (const export_job& job : export_jobs()) {
    fs::current_path(fs::path(path) / job.name);
    good = endures(job, calls) && good;
  }
  fs::current_path("/");
  return good ? 0 : 1;
}

}  // namespace
}  // namespace ocpan::faults

// endurance_run [CALLS]
int main(int count, char** arguments) {
  if (!ocpan::faults::controls()) return ocpan::faults::start_with_interposer(arguments);
  return ocpan::faults::run(count > 1 ? std::atoi(arguments[1]) : 200);
}

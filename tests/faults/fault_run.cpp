// Lets the calls of whole runs of the exports fail, one in each, and tells how they ended.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>

#include <CLI/CLI.hpp>

#include "tests/faults/fault_child.h"
#include "tests/faults/fault_plan.h"
#include "tests/faults/preload.h"
#include "tests/faults/resources.h"
#include "tests/support/temp_folder.h"

namespace ocpan::faults {
namespace {

namespace fs = std::filesystem;

struct run_options {
  std::vector<std::string> jobs;  // empty: all
  std::size_t most = 400;         // faults of a job and kind
  bool cold = false;              // leave the first call of a process its one-time work
  std::string only_kind;          // empty: all
  long nth = 0;                   // 0: all
  bool lasting = false;
};

struct fault_counts {
  long injected = 0;
  long survived = 0;
  std::map<int, long> codes;
  std::map<std::string, long> foreign;  // by what happened
  long problems = 0;
};

std::string fault_text(const fault& which) {
  std::string text(kind_names[static_cast<std::size_t>(which.kind)]);
  return text + " " + std::to_string(which.nth) + (which.lasting ? " and later" : "");
}

void count(fault_counts& counts, const export_job& job, const fault& which,
           const fault_outcome& outcome, bool with_details) {
  if (with_details) std::printf("%s\n%s", outcome.problem.c_str(), outcome.details.c_str());
  if (!outcome.fired) return;
  ++counts.injected;
  if (outcome.survived) {
    ++counts.survived;
    ++counts.codes[outcome.code];
  }
  if (outcome.problem.empty()) return;
  if (outcome.foreign) {
    ++counts.foreign[outcome.problem];
    return;
  }
  ++counts.problems;
  std::printf("PROBLEM %s, %s fails, code %d: %s\n", job.name.c_str(), fault_text(which).c_str(),
              outcome.code, outcome.problem.c_str());
  std::fflush(stdout);
}

void run_kind(fault_counts& counts, const export_job& job, const good_run& good, call_kind kind,
              const run_options& options) {
  if (options.nth != 0) {
    const fault which = {kind, options.nth, options.lasting};
    count(counts, job, which, run_with_fault(job, good, which), true);
    return;
  }
  const auto stacks = call_stacks(job, good, kind);
  // Lasting failures come to their end sooner, and fewer of them differ.
  for (const bool lasting : {false, true}) {
    const std::size_t most = lasting ? options.most / 4 : options.most;
    const long injected_before = counts.injected;
    const std::vector<long> planned = planned_faults(stacks, most);
    for (const long nth : planned) {
      const fault which = {kind, nth, lasting};
      count(counts, job, which, run_with_fault(job, good, which), false);
    }
    if (lasting || planned.empty()) continue;
    std::printf("  %-13s %-9s %8zu calls from %5zu places %6ld failed\n", job.name.c_str(),
                kind_names[static_cast<std::size_t>(kind)].data(), stacks.size(),
                std::set(stacks.begin(), stacks.end()).size(), counts.injected - injected_before);
    std::fflush(stdout);
  }
}

// False if the job doesn't even succeed without a fault.
bool run_job(fault_counts& counts, const export_job& job, const std::string& folder,
             const run_options& options) {
  fs::current_path(fs::path(folder) / job.name);
  good_run good;
  if (!run_without_fault(good, job)) {
    std::printf("PROBLEM %s fails without a fault:\n%s\n", job.name.c_str(), good.printed.c_str());
    return false;
  }
  if (!options.cold) warm_up(job, good);
  for (std::size_t k = 0; k < kind_names.size(); ++k) {
    if (!options.only_kind.empty() && options.only_kind != kind_names[k]) continue;
    run_kind(counts, job, good, static_cast<call_kind>(k), options);
  }
  return true;
}

int run_all(const run_options& options) {
  const auto start = std::chrono::steady_clock::now();
  const testing::temp_folder folder;
  if (const std::string problem = write_job_inputs(folder.path().string()); !problem.empty()) {
    std::printf("The inputs can't be written: %s\n", problem.c_str());
    return 1;
  }
  fault_counts counts;
  bool good = true;
  for (const export_job& job : export_jobs()) {
    const auto& jobs = options.jobs;
    if (!jobs.empty() && std::count(jobs.begin(), jobs.end(), job.name) == 0) continue;
    good = run_job(counts, job, folder.path().string(), options) && good;
  }
  fs::current_path("/");
  long foreign = 0;
  for (const auto& [what, times] : counts.foreign) {
    std::printf("Not ours, %ld times: %s\n", times, what.c_str());
    foreign += times;
  }
  std::printf("Codes:");
  for (const auto& [code, times] : counts.codes) std::printf(" %d: %ld,", code, times);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  std::printf(
      "\n%ld faults, %ld calls came back, %ld other libraries' doing, %ld problems, %.0f s\n",
      counts.injected, counts.survived, foreign, counts.problems, taken.count());
  return good && counts.problems == 0 && counts.injected > 0 ? 0 : 1;
}

}  // namespace
}  // namespace ocpan::faults

int main(int count, char** arguments) {
  using namespace ocpan::faults;
  run_options options;
  CLI::App app("Lets calls of whole runs of the exports fail");
  app.add_option("--job", options.jobs, "only the jobs of these names");
  app.add_option("--kind", options.only_kind, "only calls of this kind");
  app.add_option("--most", options.most, "faults of each job and kind");
  app.add_option("--nth", options.nth, "only this call, and print how it ended");
  app.add_flag("--lasting", options.lasting, "with --nth: and all later ones");
  app.add_flag("--cold", options.cold, "each in a process that made no call yet");
  CLI11_PARSE(app, count, arguments);
  if (!controls()) return start_with_interposer(arguments);
  return run_all(options);
}

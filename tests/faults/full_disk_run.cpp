// Runs the exports on a disk that is too small for their outputs, of many sizes.
#include <cstdio>
#include <filesystem>
#include <map>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "include/oc_pan_cal.h"
#include "tests/faults/export_jobs.h"
#include "tests/faults/folder_state.h"
#include "tests/faults/quiet_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan::faults {
namespace {

namespace fs = std::filesystem;

constexpr int cannot_mount = 77;    // what the test driver takes for skipped
constexpr long large_disk = 16384;  // kilobytes

struct disk_counts {
  long runs = 0;
  long problems = 0;
  std::map<int, long> codes;
};

bool mount_disk(const std::string& folder, long kilobytes, unsigned long flags = 0) {
  const std::string size = "size=" + std::to_string(kilobytes) + "k";
  return mount("tmpfs", folder.c_str(), "tmpfs", flags, size.c_str()) == 0;
}

int run_quietly(const export_job& job) {
  const quiet_output quiet;
  return job.run();
}

// Runs a job on the disk in the working folder, which leaves it so many kilobytes.
void run_with_space(disk_counts& counts, const export_job& job, const good_run& good,
                    const std::string& disk, long kilobytes) {
  mount_disk(disk, large_disk, MS_REMOUNT);
  put_back(job, good);
  const auto space = fs::space(".");
  const long used = static_cast<long>((space.capacity - space.free) / 1024);
  if (!mount_disk(disk, used + kilobytes, MS_REMOUNT)) return;
  const int code = run_quietly(job);
  ++counts.runs;
  ++counts.codes[code];
  const std::string problem = folder_problem(job, good, code, good.printed);
  if (problem.empty()) return;
  ++counts.problems;
  std::printf("PROBLEM %s, %ld kB left, code %d: %s\n", job.name.c_str(), kilobytes, code,
              problem.c_str());
}

void run_job(disk_counts& counts, const export_job& job, const std::string& inputs,
             const std::string& disk) {
  mount_disk(disk, large_disk);
  fs::copy(fs::path(inputs) / job.name, disk, fs::copy_options::recursive);
  fs::current_path(disk);
  good_run good;
  good.inputs = state_of_working_folder();
  if (run_quietly(job) != OCPAN_SUCCESS) ++counts.problems;
  good.after = state_of_working_folder();
  for (const long kilobytes : {0, 4, 8, 12, 16, 24, 32, 48, 64, 1000, 4000, 5000, 8000}) {
    run_with_space(counts, job, good, disk, kilobytes);
  }
  fs::current_path("/");
  umount2(disk.c_str(), MNT_DETACH);
}

int run() {
  const testing::temp_folder inputs, disk;
  if (unshare(CLONE_NEWNS) != 0 ||
      mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      !mount_disk(disk.path().string(), 64)) {
    std::printf("No disk can be mounted here\n");
    return cannot_mount;
  }
  umount2(disk.path().c_str(), MNT_DETACH);
  if (!write_job_inputs(inputs.path().string()).empty()) return 1;
  disk_counts counts;
  for (const export_job& job : export_jobs()) {
    if (!job.outputs.empty()) {
      run_job(counts, job, inputs.path().string(), disk.path().string());
    }
  }
  std::printf("%ld runs on small disks, %ld problems; codes:", counts.runs, counts.problems);
  for (const auto& [code, times] : counts.codes) std::printf(" %d: %ld,", code, times);
  std::printf("\n");
  return counts.runs > 0 && counts.problems == 0 ? 0 : 1;
}

}  // namespace
}  // namespace ocpan::faults

int main() { return ocpan::faults::run(); }

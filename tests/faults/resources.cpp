#include "tests/faults/resources.h"

#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace ocpan::faults {
namespace {

long entries_of(const char* folder) {
  using std::filesystem::directory_iterator;
  return std::distance(directory_iterator(folder), directory_iterator());
}

}  // namespace

const fault_controls* controls() {
  static const auto give =
      reinterpret_cast<controls_function*>(dlsym(RTLD_DEFAULT, controls_symbol));
  static const fault_controls* const found = give ? give() : nullptr;
  return found;
}

resources resources_now() {
  const long descriptors = entries_of("/proc/self/fd");
  const long threads = entries_of("/proc/self/task");
  return {controls()->balance(), descriptors, threads};
}

resources operator-(const resources& after, const resources& before) {
  return {{after.memory.blocks - before.memory.blocks, after.memory.bytes - before.memory.bytes},
          after.descriptors - before.descriptors,
          after.threads - before.threads};
}

bool nothing_kept(const resources& kept) {
  return kept.memory.blocks <= 0 && kept.memory.bytes <= 0 && kept.descriptors == 0 &&
         kept.threads == 0;
}

long resident_kilobytes() {
  long size = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace ocpan::faults

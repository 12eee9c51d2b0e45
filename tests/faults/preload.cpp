#include "tests/faults/preload.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace ocpan::faults {

int start_with_interposer(char** arguments) {
  if (std::getenv("LD_PRELOAD")) {
    std::fprintf(stderr, "%s can't be loaded\n", INTERPOSER);
    return 1;
  }
  setenv("LD_PRELOAD", INTERPOSER, 1);
  setenv("OPENCV_FOR_THREADS_NUM", "1", 1);  // a pool of threads doesn't outlive a fork
  execv("/proc/self/exe", arguments);
  std::perror("execv");
  return 1;
}

}  // namespace ocpan::faults

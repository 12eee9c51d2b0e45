#pragma once

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ocpan::faults {

// While it lives, what is printed is thrown away.
class quiet_output {
 public:
  quiet_output() {
    std::fflush(stdout);
    own_ = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }
  ~quiet_output() {
    std::fflush(stdout);
    dup2(own_, STDOUT_FILENO);
    close(own_);
  }
  quiet_output(const quiet_output&) = delete;
  quiet_output& operator=(const quiet_output&) = delete;

 private:
  int own_ = -1;
};

}  // namespace ocpan::faults

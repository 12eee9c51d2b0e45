#pragma once

#include <string>

#include "tools/prod_child.h"

namespace ocpan {

struct prod_options {
  prod_job job;
  std::string log;     // file to append a row to, empty for none
  std::string serial;  // of the unit
  std::string limits;  // file, empty for none
  std::string json;    // file to write the outcome to, empty for none
};

inline constexpr int exit_doubtful = 10;
inline constexpr int exit_outside_limits = 11;

// Runs a production job in a child process, judges the outcome and tells it. Gives the exit
// code: the library's result (-1 as 255), 128 plus the signal that ended the child, or one
// of the tool's own.
//
//   program   the tool itself, started again as the child
int run_prod(const prod_options& options, const std::string& program);

}  // namespace ocpan

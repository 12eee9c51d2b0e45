#pragma once

#include <string>

namespace ocpan {

struct cal_options {
  std::string configuration;
  bool quiet = false;   // leave out the library's lines
  std::string json;     // file for result and measures, empty for none
  bool refine = false;  // refine the calibration too, into a file beside it
};

// Runs a calibration in a child process, tells what it came to, and gives the exit code:
// the library's result (-1 as 255), 128 plus the signal that ended the child, or one of
// the tool's own.
//
//   program   the tool itself, started again as the child
int run_cal(const cal_options& options, const std::string& program);

}  // namespace ocpan

#pragma once

#include <deque>
#include <string>

#include "tools/cal_child.h"
#include "tools/cal_outputs.h"
#include "tools/cal_progress.h"

namespace ocpan {

// Everything a finished calibration can be told from.
struct cal_story {
  const cal_child_end& end;
  const cal_progress& progress;
  const cal_outputs& outputs;
  const std::deque<std::string>& last_lines;  // of the library, without empty ones
};

// Prints the measures and the files of a run that succeeded.
void print_cal_table(const cal_story& story);

// The run as a JSON text: result, measures, pictures, files. A run that broke off has the
// result null; a measure that isn't a number is null.
std::string cal_json(const cal_story& story, int exit_code);

}  // namespace ocpan

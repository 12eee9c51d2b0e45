#pragma once

#include <string>
#include <thread>
#include <vector>

#include "tools/progress_bar.h"

namespace ocpan {

// The report of a production run.
inline constexpr const char* prod_report = "./tmp/Prod_QA_Measures.txt";

// The debug pictures of a production run that are there, by name.
std::vector<std::string> prod_debug_pictures();

// Takes report and debug pictures of an earlier run away, so that nobody takes them for this
// run's. Gives the first that can't be taken away, empty if none is left.
[[nodiscard]] std::string forget_earlier_run();

// What the run is at, told by the debug pictures that are there.
std::string prod_stage(const std::vector<std::string>& pictures);

// Shows the stage on a line of its own on standard error while it lives; nothing where that
// is no terminal.
class stage_display {
 public:
  stage_display();

 private:
  progress_line line_;
  std::jthread thread_;
};

}  // namespace ocpan

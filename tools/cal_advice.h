#pragma once

#include <string>

#include "tools/cal_report.h"
#include "tools/cal_run.h"

namespace ocpan {

// Tells why a run failed, what to do about it and what it leaves behind.
void explain_failure(const cal_story& story, const cal_options& options, int exit_code);

// Warns of what a run that ended by itself leaves to be doubted.
//
//   folder_failure   why there is no folder for debug pictures, empty if there is one
void warn_of_doubts(const cal_story& story, const std::string& folder_failure);

}  // namespace ocpan

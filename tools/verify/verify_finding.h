#pragma once

#include <string>
#include <vector>

#include "tools/verdict.h"

namespace ocpan {

// Something that is wrong with the tables.
struct verify_finding {
  verdict judged = verdict::doubtful;
  std::string subject;  // the file or the camera
  std::string reason;
  std::string advice;  // what to do
};

using verify_findings = std::vector<verify_finding>;

}  // namespace ocpan

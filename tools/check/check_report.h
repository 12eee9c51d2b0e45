#pragma once

#include <string>

#include "tools/check/rig_check.h"

namespace ocpan {

// Prints what a check found: the pictures, the boards seen together and the coverage as
// tables, then the findings and the verdict.
//
//   brief   leaves out the tables and the hints
void print_check(const rig_check& check, bool brief);

// The check as a JSON text. Cameras count from 1, frames from 0.
[[nodiscard]] std::string check_json(const rig_check& check);

}  // namespace ocpan

#pragma once

#include <string>

#include "tools/verify/verify_run.h"

namespace ocpan {

// The verification for people, lines with their ends.
//
//   brief   the findings and the verdict only
std::string verify_text(const verified_tables& result, bool brief);

// The verification for programs, a JSON object.
std::string verify_json(const verified_tables& result);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "production/prod_measures.h"

namespace ocpan {

// The measures that the report of a production run tells, to its six digits. Gives nothing
// if a total, or a measure of a pair or a camera, is missing.
std::optional<prod_measures> read_production_report(std::istream& in);

// Why the outcome of a run that ended well is to be doubted, in plain words; empty if it
// isn't. The search can lock on a wrong cell of the pattern, or find nothing, and says
// neither. A measure that is no number is doubted too.
std::vector<std::string> doubts_about(const prod_measures& measures, std::size_t cameras);

}  // namespace ocpan

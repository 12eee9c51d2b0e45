#pragma once

#include <string>

#include "tools/verify/table_manifest.h"
#include "tools/verify/verify_finding.h"

namespace ocpan {

// Tells where the files of a prefix, or what they were made from, are no longer those of
// their manifest. A file that isn't there is not told of.
//
//   manifest   of the prefix
//   now        the inputs that the tables are verified against
void check_manifest(const table_manifest& manifest, const table_manifest& now,
                    const std::string& prefix, verify_findings& findings);

// Tells where tables and polygons were made from different inputs.
void check_same_inputs(const table_manifest& tables, const table_manifest& polygons,
                       verify_findings& findings);

}  // namespace ocpan

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/verify/coverage.h"
#include "tools/verify/overlaps.h"
#include "tools/verify/polygon_check.h"
#include "tools/verify/table_check.h"
#include "tools/verify/verify_finding.h"

namespace ocpan {

// What the numbers of a verification mean, in words: each adds its findings.

// A table or polygon that can't be read.
//
//   problem   what reading it gave
//   maker     the command that makes such files
void judge_unreadable(const std::string& file, const std::string& problem, const std::string& maker,
                      verify_findings& findings);

// A table against its calibration and mask.
//
//   owner   the other camera whose positions the table holds, if there is one
void judge_table(const table_comparison& compared, const std::string& file,
                 std::optional<std::size_t> owner, verify_findings& findings);

void judge_polygon(const polygon_comparison& compared, const std::string& file,
                   verify_findings& findings);

void judge_coverage(const sphere_coverage& coverage, verify_findings& findings);

void judge_overlaps(const std::vector<camera_overlap>& overlaps, verify_findings& findings);

// A number for people: rounded to so many digits behind the point.
std::string rounded_text(double value, int digits);

// "camera 1" or "cameras 0, 1 and 4".
std::string camera_names(const std::vector<std::size_t>& cameras);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "production/prod_measures.h"

namespace ocpan {

// What a line allows a measure to be.
struct measure_limit {
  std::string measure;
  double min = 0;
  double max = 0;
};

// Reads limits from a JSON text, {"reprojection_mean": {"max": 0.2}, ...}; a missing "min"
// or "max" doesn't limit. Gives why it can't be used, naming what is wrong; empty if it can.
[[nodiscard]] std::string read_limits(std::vector<measure_limit>& limits, const std::string& text);

// Each measure that is outside its limits, in words. The limit of a pair's or a camera's
// measure holds for every pair or camera; what is no number is outside.
std::vector<std::string> outside_limits(const std::vector<measure_limit>& limits,
                                        const prod_measures& measures);

// The names of all measures that can be limited, separated by commas.
std::string measure_names();

// One unit of the production line.
struct prod_log_entry {
  std::string time;  // ISO 8601, UTC
  std::string serial;
  std::string verdict;
  int exit_code = 0;
  std::optional<prod_measures> measures;  // of a run that ended well
  std::vector<std::string> reasons = {};  // why it isn't good, in words
};

// The columns and a row of the log, comma-separated, without line ends. A rig of so many
// cameras has columns for all its pairs; pairs without a match leave the last ones empty.
std::string log_header(std::size_t cameras);
std::string log_row(const prod_log_entry& entry, std::size_t cameras);

// The same as JSON, with the reasons. Of measures of pairs or cameras there are lists.
std::string prod_json(const prod_log_entry& entry);

// Why a row can't be appended to the log, with what to do about it; empty if it can.
std::string obstacle_to_log(const std::string& path, std::size_t cameras);
// Appends a row, behind the header if the log is new. Gives false if it can't be written.
[[nodiscard]] bool append_to_log(const std::string& path, const prod_log_entry& entry,
                                 std::size_t cameras);

}  // namespace ocpan

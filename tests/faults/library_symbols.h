#pragma once

#include <cstdint>
#include <string>

namespace ocpan::faults {

// The function of a loaded library or program at an address within its file, also one that
// isn't exported; empty if it isn't known. Asks `nm` once for each file.
std::string function_at(const std::string& file, std::uint64_t offset);

}  // namespace ocpan::faults

#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/check/finding.h"

namespace ocpan {

// The text with each byte that a terminal might take for a command, or that is no UTF-8, as
// \x and two digits, and cut off where it is longer than a sentence.
[[nodiscard]] std::string printable(std::string_view text);

// Whether a file holds none of the bytes that no text holds.
[[nodiscard]] bool looks_like_text(std::istream& in);

// The findings of a configuration in the order of its lines, those of the whole file last,
// printable, and where there are too many with a count of those left out. The worst stay.
[[nodiscard]] std::vector<finding> tame_findings(std::vector<finding> found,
                                                 const std::string& configuration);

}  // namespace ocpan

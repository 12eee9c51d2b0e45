#pragma once

#include <vector>

#include "tools/check/written_config.h"

namespace ocpan {

// What the library takes in silence although it is hardly meant: characters that it doesn't
// read, keys that it takes for others, numbers that make no sense, an output that can't be
// written. In the order of the file.
[[nodiscard]] std::vector<finding> config_remarks(const written_config& config);

// What is odd about the series of pictures that the patterns found: sets that are dropped,
// series of unequal length or with other numbers, a picture that stands for two cameras.
[[nodiscard]] std::vector<finding> series_remarks(const written_config& config);

}  // namespace ocpan

#pragma once

#include <string>

namespace ocpan::fuzz {

// Whether the file is there, in which case it must be a whole lookup table: of its size,
// with zeros in the slots that no face has, and with no weight beyond the picture.
//
//   width, height   of the camera's picture, pixels
bool is_whole_table(const std::string& path, int width, int height);

// Whether the file is there, in which case it must be a whole polygon: 128 directions none of
// whose components is larger than 1.
bool is_whole_polygon(const std::string& path);

}  // namespace ocpan::fuzz

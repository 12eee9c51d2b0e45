#pragma once

#include <string>

namespace ocpan {

// Tells of the first number of a calibration that is nan or infinite, which the library
// reads as 0: its name and its line. Empty if there is none, and for a file that can't be
// opened, of which the library tells.
//
//   path           either kind of slash
//   project_file   a panorama project file, otherwise a calibration file
std::string number_that_is_none(const std::string& path, bool project_file);

}  // namespace ocpan

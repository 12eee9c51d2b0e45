#pragma once

#include <string>

namespace ocpan {

// Why a file can't be an output of a command that reads a calibration and the pictures of a
// configuration, with what to do about it; empty if it can. None of the two files, the
// pictures of all sets and the file that keeps their corners may be overwritten. Touches
// nothing; a configuration that can't be read names no pictures.
std::string why_not_rig_output(const std::string& output, const std::string& calibration,
                               const std::string& configuration);

}  // namespace ocpan

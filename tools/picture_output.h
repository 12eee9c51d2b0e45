#pragma once

#include <span>
#include <string>

namespace ocpan {

// Why a file can't be an output of a command that reads these inputs, with what to do about
// it; empty if it can. Touches nothing.
std::string why_not_output(const std::string& output, std::span<const std::string> inputs);

// The same for a picture, whose ending names a format that can be written.
std::string why_not_picture_output(const std::string& output, std::span<const std::string> inputs);

}  // namespace ocpan

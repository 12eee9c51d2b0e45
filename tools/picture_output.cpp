#include "tools/picture_output.h"

#include <filesystem>
#include <system_error>

#include <opencv2/imgcodecs.hpp>

#include "platform/native_path.h"
#include "tools/output_check.h"

namespace ocpan {

std::string why_not_output(const std::string& output, std::span<const std::string> inputs) {
  for (const std::string& input : inputs) {
    std::error_code not_there;
    if (std::filesystem::equivalent(native_path(input), native_path(output), not_there)) {
      return output + " is an input and would be overwritten; name another output";
    }
  }
  return why_not_writable(output);
}

std::string why_not_picture_output(const std::string& output, std::span<const std::string> inputs) {
  if (!cv::haveImageWriter(native_path(output))) {
    return output + " ends in no picture format that can be written; end it in .png, say";
  }
  return why_not_output(output, inputs);
}

}  // namespace ocpan

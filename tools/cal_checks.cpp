#include "tools/cal_checks.h"

#include <filesystem>
#include <system_error>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "tools/output_check.h"

namespace ocpan {
namespace {

constexpr const char* output_endings[] = {"", "_distance.csv", "_QA_Measures.txt"};

// The one absolute form of a name, be the file there or not; empty if there is none.
std::filesystem::path plain(const std::string& name) {
  std::error_code failure;
  const auto absolute = std::filesystem::absolute(native_path(name), failure);
  return failure ? absolute : std::filesystem::weakly_canonical(absolute, failure);
}

bool same_file(const std::string& a, const std::string& b) {
  std::error_code not_there;
  return std::filesystem::equivalent(native_path(a), native_path(b), not_there) ||
         (!plain(a).empty() && plain(a) == plain(b));
}

}  // namespace

std::string obstacle_to_json(const cal_options& options, const output_name& output) {
  if (options.json.empty()) return {};
  if (same_file(options.json, options.configuration)) {
    return "--json names the configuration itself; name another file";
  }
  for (const char* ending : output_endings) {
    if (!output.text.empty() && same_file(options.json, output.text + ending)) {
      return "--json names a file that the calibration writes; name another file";
    }
  }
  const std::string reason = why_not_writable(options.json);
  return reason.empty() ? reason : "--json: " + reason;
}

std::string obstacle_to_calibration(const std::string& configuration, const output_name& output) {
  if (!output.known) return {};
  if (output.text.empty()) {
    return configuration +
           " names no output; add a line output_filename: 'NAME' ahead of camera_info";
  }
  const std::string where = "output_filename in " + configuration;
  if (same_file(output.text, configuration)) {
    return where + " names the configuration itself; name another file";
  }
  for (const char* ending : output_endings) {
    const std::string reason = why_not_writable(output.text + ending);
    if (!reason.empty()) return where + ": " + reason;
  }
  return {};
}

output_name look_for_output(const std::string& configuration) {
  std::error_code failure;
  if (!std::filesystem::is_regular_file(native_path(configuration), failure)) return {};
  std::ifstream in = open_input(configuration);
  return find_output_name(in);
}

}  // namespace ocpan

#include <array>

#include <opencv2/core.hpp>

#include "include/oc_pan_cal.h"
#include "src/console.h"
#include "tools/commands.h"

namespace ocpan {
namespace {

void print_versions() {
  std::array<char, 128> library = {};
  if (ocPAN_Version(library.data()) != OCPAN_SUCCESS) library[0] = '?';
  print_line("oc_pan ", OCPAN_TOOL_VERSION);
  print_line("liboc_pan_cal ", library.data());
  print_line("OpenCV ", cv::getVersionString());
}

}  // namespace

void add_version_command(CLI::App& tool, int& exit_code) {
  CLI::App* command =
      tool.add_subcommand("version", "Print the versions of the tool, the library and OpenCV");
  command->footer("Example:\n  oc_pan version");
  command->callback([&exit_code] {
    print_versions();
    exit_code = 0;
  });
}

}  // namespace ocpan

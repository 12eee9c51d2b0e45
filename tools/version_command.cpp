#include <array>
#include <string>

#include <CLI/CLI.hpp>
#include <opencv2/core.hpp>

#include "include/oc_pan_cal.h"
#include "src/console.h"

namespace ocpan {
namespace {

std::string versions() {
  std::array<char, 128> library = {};
  if (ocPAN_Version(library.data()) != OCPAN_SUCCESS) library[0] = '?';
  return std::string("oc_pan ") + OCPAN_TOOL_VERSION + "\nliboc_pan_cal " + library.data() +
         "\nOpenCV " + cv::getVersionString();
}

}  // namespace

void add_version_command(CLI::App& tool, int& exit_code) {
  tool.set_version_flag("--version", versions, "Print the versions and exit");
  CLI::App* command =
      tool.add_subcommand("version", "Print the versions of the tool, the library and OpenCV");
  command->footer(R"(Examples:
  oc_pan version

Exit codes:
  0    done
  3    standard output can't be written
  64   wrong usage)");
  command->callback([&exit_code] {
    print_line(versions());
    exit_code = 0;
  });
}

}  // namespace ocpan

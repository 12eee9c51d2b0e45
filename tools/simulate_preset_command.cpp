#include <iostream>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "simulator/presets.h"
#include "simulator/rig_json.h"
#include "tools/common_options.h"
#include "tools/messages.h"

namespace ocpan {
namespace {

struct preset_options {
  std::string name;
  std::string out;  // empty for standard output
};

int write_preset(const preset_options& options) {
  rig_description rig;
  if (const std::string problem = make_preset(rig, options.name); !problem.empty()) {
    complain(problem);
    return exit_wrong_usage;
  }
  if (options.out.empty()) {
    std::cout << rig_to_json(rig);
    return OCPAN_SUCCESS;
  }
  if (const std::string problem = write_rig_file(rig, options.out); !problem.empty()) {
    complain(problem, "; name a file in a folder that is there and may be written");
    return OCPAN_OUTPUT;
  }
  return OCPAN_SUCCESS;
}

std::string footer() {
  std::string text = "Names:\n";
  for (const std::string& name : preset_names()) text += "  " + name + "\n";
  return text + R"(
The number counts the cameras; lens 0 is rectilinear, 1 and 2 are fisheyes. Of "unlike"
each camera has its own lens.

Examples:
  oc_pan simulate preset 3-lens0 --out rig.json
  oc_pan simulate preset 4-lens1 > rig.json

Exit codes:
  0    done
  3    the file can't be written
  64   wrong usage, or no preset of that name
  255  internal failure)";
}

}  // namespace

void add_simulate_preset_command(CLI::App& simulate, int& exit_code) {
  const auto options = std::make_shared<preset_options>();
  CLI::App* command =
      simulate.add_subcommand("preset", "Write the description of a ready-made rig");
  command->add_option("NAME", options->name, "The preset's name, see below")
      ->type_name("")
      ->required();
  add_out_option(command, options->out, "standard output if left out");
  command->footer(footer());
  command->callback([options, &exit_code] { exit_code = write_preset(*options); });
}

}  // namespace ocpan

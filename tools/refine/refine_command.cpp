#include <memory>

#include <CLI/CLI.hpp>

#include "tools/common_options.h"
#include "tools/refine/refine_run.h"

namespace ocpan {
namespace {

constexpr const char* footer =
    R"(CALIBRATION is what oc_pan cal found from the pictures of CONFIG, or from other pictures
of the same rig. All lenses and all places are refined together, each lens for itself, until
nothing falls any more; camera 1 keeps its frame. Corners and pictures that don't fit are
told and don't pull. A calibration that the boards can't tell from the refined one is
written as it is. docs/refinement.md tells what is done.

Examples:
  oc_pan refine rig.cal rig.txt --out rig_refined.cal
  oc_pan refine rig.cal rig.txt --out rig_refined.cal --tie 1
  oc_pan refine rig.cal rig.txt --out rig_refined.cal --bend off --json refined.json

Exit codes:
  0    done, the refined calibration is written
  2    an input can't be opened
  3    an output can't be written
  4    CALIBRATION or CONFIG is malformed
  6    a value of an input is out of range, or the cameras of the two don't agree
  10   doubtful: the refined calibration is written, warnings tell what the boards leave open
  11   unusable, nothing is written: no board was found, the pictures contradict one another,
       or the result would be worse or too uncertain
  64   wrong usage
  255  internal failure)";

}  // namespace

void add_refine_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<refine_options>();
  CLI::App* command = tool.add_subcommand(
      "refine", "Refine a calibration: each lens for itself, everything together");
  command->add_option("CALIBRATION", options->calibration, "The calibration to start from")
      ->type_name("FILE")
      ->required();
  command->add_option("CONFIG", options->configuration, "The configuration of the pictures")
      ->type_name("FILE")
      ->required();
  add_out_option(command, options->out, "the refined calibration")->required();
  command
      ->add_option("--tie", options->tie,
                   "Hold lenses of a kind near one another: 1 expects the scatter of a usual "
                   "production, 10 a tenth of it")
      ->type_name("STRENGTH")
      ->check(CLI::PositiveNumber);
  command
      ->add_option("--bend", options->bend,
                   "Whether boards may be bent, by two numbers each: auto lets the corners decide")
      ->type_name("WHEN")
      ->check(CLI::IsMember({"auto", "on", "off"}))
      ->capture_default_str();
  add_json_option(command, options->json);
  add_quiet_flag(command, options->quiet, "warnings and failures stay");
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_refine(*options); });
}

}  // namespace ocpan

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "platform/child_process.h"
#include "tools/common_options.h"
#include "tools/prod_child.h"
#include "tools/prod_log.h"
#include "tools/prod_run.h"

namespace ocpan {
namespace {

constexpr const char* footer =
    R"(One picture per camera, in the order of the calibration. Debug pictures and the report
Prod_QA_Measures.txt go to the folder tmp in the working folder; those of an earlier run
are removed first. A run that ends well can still have matched the wrong cells of the
pattern: the tool judges what it got, and limits of your own decide good or bad.

LIMITS is JSON such as
  {"reprojection_mean": {"max": 0.2}, "pair_point_count": {"min": 40}}
with the measures that are columns of the log; those of a pair (pair_...) or a camera
(cam_...) hold for each of them.

Examples:
  oc_pan prod --radius 1 rig.cal refined.cal cam0.png cam1.png
  oc_pan prod --radius 1 rig.cal refined.cal cam0.png cam1.png \
      --log line.csv --serial A123 --limits limits.json

Exit codes:
  0    good
  2    an input can't be opened, or a picture is unusable
  3    an output can't be opened or written
  4    the calibration, a picture or the limits are malformed
  5    out of memory
  6    a value is out of range, or pictures and cameras differ in number
  10   doubtful: refined.cal is written, but see the reasons given
  11   bad: refined.cal is written, but a measure is outside its limits
  64   wrong usage
  70   the child process couldn't be started, or ended without a result
  130  interrupted; other codes above 128 are 128 and the signal that ended the run
  255  internal failure, a picture without a corner, or cameras without overlap)";

}  // namespace

void add_prod_child_command(CLI::App& tool, int& exit_code) {
  const auto words = std::make_shared<std::vector<std::string>>();
  const auto radius = std::make_shared<float>();
  CLI::App* command = tool.add_subcommand(prod_child_command, "");
  command->group("");  // for the tool itself: no help shows it
  command->add_option("RADIUS", *radius)->required();
  command->add_option("FILES", *words)
      ->required()
      ->expected(3, CLI::detail::expected_max_vector_size);
  command->callback([words, radius, &exit_code] {
    // Calibration, output, pictures, and last the channel.
    const prod_job job = {
        words->at(0), words->at(1), *radius, {words->begin() + 2, words->end() - 1}};
    exit_code = call_prod_and_reply(job, words->back());
  });
}

void add_prod_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<prod_options>();
  CLI::App* command = tool.add_subcommand("prod", "Refine a calibration on the production line");
  prod_job& job = options->job;
  command
      ->add_option(
          "--radius", job.radius_metres,
          "Radius of the sphere that is seen, 1000 units of the calibration; the fixture's")
      ->type_name("METRES")
      ->check(CLI::Range(0.2, 20.0))
      ->required();
  command->add_option("CALIBRATION", job.calibration, "The calibration to start from")
      ->type_name("FILE")
      ->required();
  command->add_option("OUTPUT", job.output, "The refined calibration")
      ->type_name("FILE")
      ->required();
  command->add_option("PICTURE", job.pictures, "A picture for each camera, 2 to 8")
      ->type_name("FILE")
      ->expected(2, 8)
      ->required();
  CLI::Option* log =
      command->add_option("--log", options->log, "Append a row with all measures to this CSV file")
          ->type_name("FILE");
  CLI::Option* serial =
      command->add_option("--serial", options->serial, "The unit, for the log")->type_name("TEXT");
  log->needs(serial);
  serial->needs(log);
  command->add_option("--limits", options->limits, "Limits that decide good or bad, JSON")
      ->type_name("FILE");
  add_json_option(command, options->json);
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_prod(*options, own_program()); });
}

}  // namespace ocpan

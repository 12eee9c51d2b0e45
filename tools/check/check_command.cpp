#include <iostream>
#include <memory>
#include <string>

#include "include/oc_pan_cal.h"
#include "platform/terminal.h"
#include "platform/text_file.h"
#include "tools/cal_checks.h"
#include "tools/check/check_report.h"
#include "tools/commands.h"
#include "tools/common_options.h"
#include "tools/messages.h"
#include "tools/progress_bar.h"
#include "tools/text_output.h"

namespace ocpan {
namespace {

struct check_options {
  std::string configuration;
  std::string json;
  bool quiet = false;
};

constexpr const char* footer =
    R"(Solves nothing and takes seconds. Tells what is wrong with CONFIG by file, line and
column, what the library would take in silence, which pictures are no use, which boards
the cameras saw together, how well they cover the pictures, and frames whose boards flip
or don't belong together. The corners found are kept beside the output, for the other
commands too.

Examples:
  oc_pan check rig.txt
  oc_pan check rig.txt --quiet --json check.json

Exit codes:
  0    good
  2    CONFIG can't be opened
  3    the JSON file can't be written
  10   doubtful: a calibration may come out worse than it need
  11   unusable: a calibration would fail or come out wrong
  64   wrong usage)";

int run_check(const check_options& options) {
  if (!open_input(options.configuration)) {
    complain(options.configuration,
             " can't be opened; name the calibration's configuration, or "
             "make one with oc_pan init");
    return OCPAN_INPUT;
  }
  cal_options outputs;
  outputs.configuration = options.configuration;
  outputs.json = options.json;
  const std::string obstacle = obstacle_to_json(outputs, look_for_output(options.configuration));
  if (!obstacle.empty()) {
    complain(obstacle);
    return OCPAN_OUTPUT;
  }
  rig_check check;
  {
    progress_line bar(std::cerr, standard_error_is_terminal());
    check = check_rig(options.configuration,
                      [&](int done, int total) { bar.show(bar_text(done, total, "pictures")); });
  }
  for (const std::string& warning : check.warnings) complain(warning);
  print_check(check, options.quiet);
  if (!options.json.empty() && !write_text(options.json, check_json(check) + '\n')) {
    return OCPAN_OUTPUT;
  }
  return exit_code_of(verdict_of(check.findings));
}

}  // namespace

void add_check_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<check_options>();
  CLI::App* command =
      tool.add_subcommand("check", "Check a configuration and its pictures before the long run");
  command->add_option("CONFIG", options->configuration, "The calibration's configuration file")
      ->type_name("FILE")
      ->required();
  add_quiet_flag(command, options->quiet, "what is wrong and the verdict stay");
  add_json_option(command, options->json);
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_check(*options); });
}

}  // namespace ocpan

#include <memory>

#include <CLI/CLI.hpp>

#include "tools/common_options.h"
#include "tools/evaluate/evaluate_run.h"

namespace ocpan {
namespace {

constexpr const char* footer =
    R"(How good is this calibration on these pictures, which may be others than it was made
from? The pose of every board is fitted to all cameras that saw it while the calibration
stays as it is; what is left are the residuals: found less projected. Of each pair the
place of its second camera is also fitted to the pair's own boards alone. Chained round a
ring of pairs these places should end where they began; the difference is the loop error.
A moved camera shows in its pairs, a wrong lens in the loops and by the angle.

Cameras are counted from 1, as in the configuration. Distances and shifts are in the unit
of board_scale. Corners found are kept beside the configuration's output_filename, so a
second run is quick.

Limits, from where on a result is doubtful and unusable:
  RMS residual of a camera or a pair                      0.5    2    pixels
  pair against its own boards, if 3 deviations or more    0.1    0.5  degrees
  loop error, if 3 deviations or more                     0.2    1    degrees
  boards left out, of all or of a pair's, if 2 or more    10     50   percent
  uncertainty of a camera's mapping                       1      4    pixels
  uncertainty of a pair's seam                            0.1    0.5  degrees
  --hold-out: RMS residual of frames held out             0.5    2    pixels
  --hold-out: scatter of a camera's mapping               1      4    pixels
  --hold-out: scatter of a pair's turn                    0.1    0.5  degrees
A camera with less than 5 boards, cameras that no board links, and a board in which cameras
contradict one another are doubtful; no board at all is unusable. Each finding says what to do.

--hold-out K calibrates as oc_pan cal does, K times, each time without a part of the
frames, and scores each result on the part it didn't know. It tells of the pictures more
than of CALIBRATION, and doesn't know whether that was refined: if it was, add --refine.

The uncertainty is what these boards pin down with all parameters free, as oc_pan refine
has them, from the normal matrix at CALIBRATION and the noise of the corners: a standard
deviation over the picture, and of the angle between what two cameras see in one place. It
is left out where the calibration is unusable without it, as it would mislead there.

Examples:
  oc_pan evaluate rig.cal rig.txt
  oc_pan evaluate rig.cal other_pictures.txt --json numbers.json
  oc_pan evaluate rig.cal rig.txt --hold-out 5
  oc_pan evaluate refined.cal rig.txt --hold-out 5 --refine

Exit codes:
  0    good
  2    an input can't be opened
  3    --json can't be written
  4    the calibration or the configuration is malformed
  6    a value is out of range, or the cameras of the two don't agree
  10   doubtful
  11   unusable
  64   wrong usage)";

}  // namespace

void add_evaluate_command(CLI::App& tool, int& exit_code) {
  const auto options = std::make_shared<evaluate_options>();
  CLI::App* command =
      tool.add_subcommand("evaluate", "Tell how good a calibration is on pictures of boards");
  command->add_option("CALIBRATION", options->calibration, "The calibration file")
      ->type_name("FILE")
      ->required();
  command
      ->add_option("CONFIG", options->configuration,
                   "A configuration of oc_pan cal that names the pictures")
      ->type_name("FILE")
      ->required();
  command
      ->add_option("--hold-out", options->hold_out,
                   "Also calibrate K times without a part of the frames; 2 to their number")
      ->type_name("K")
      ->check(CLI::Range(2, 1000000));
  command
      ->add_flag("--refine", options->refine,
                 "Refine as oc_pan refine does; each calibration of --hold-out")
      ->needs("--hold-out");
  add_json_option(command, options->json);
  add_quiet_flag(command, options->quiet, "findings and verdict stay");
  command->footer(footer);
  command->callback([options, &exit_code] { exit_code = run_evaluate(*options); });
}

}  // namespace ocpan

#include "tools/evaluate/evaluate_run.h"

#include <iostream>
#include <utility>

#include "include/oc_pan_cal.h"
#include "platform/terminal.h"
#include "tools/boards/rig_output.h"
#include "tools/evaluate/evaluate_pictures.h"
#include "tools/evaluate/judge_hold_out.h"
#include "tools/messages.h"
#include "tools/progress_bar.h"
#include "tools/text_output.h"

namespace ocpan {
namespace {

// Whether the frames can be dealt out to so many parts; says so if not.
bool parts_are_possible(const evaluate_story& story) {
  const std::size_t most = moment_count(story.input.pictures);
  if (story.options.hold_out == 0 || story.options.hold_out <= most) return true;
  if (most < 2) {
    complain("--hold-out ", story.options.hold_out, ": there is only ", most,
             " frame; shoot more, or leave the option away");
  } else {
    complain("--hold-out ", story.options.hold_out, ": there are only ", most,
             " frames; give a number from 2 to ", most);
  }
  return false;
}

hold_out test_on_parts(const evaluate_story& story) {
  progress_line bar(std::cerr, standard_error_is_terminal());
  const int parts = static_cast<int>(story.options.hold_out);
  return held_out({story.options.hold_out, story.options.refine}, story.input.pictures,
                  story.input.found, story.input.boards, story.found.pairs, [&](std::size_t done) {
                    bar.show(bar_text(static_cast<int>(done), parts, "calibrations"));
                  });
}

}  // namespace

int run_evaluate(const evaluate_options& options) {
  if (!options.json.empty()) {
    if (const std::string reason =
            why_not_rig_output(options.json, options.calibration, options.configuration);
        !reason.empty()) {
      complain("--json: ", reason);
      return OCPAN_OUTPUT;
    }
  }
  evaluate_story story{options, {}, {}, {}, {}};
  if (const int result =
          read_calibrated_pictures(story.input, options.calibration, options.configuration)) {
    return result & 0xFF;
  }
  if (!parts_are_possible(story)) return exit_wrong_usage;
  pictures_evaluation evaluated = evaluate_pictures(story.input);
  story.found = std::move(evaluated.found);
  story.uncertainty = std::move(evaluated.uncertainty);
  if (options.hold_out > 0) {
    story.tested = test_on_parts(story);
    judge_hold_out(story.found, *story.tested);
  }
  print_evaluation(story);
  if (!options.json.empty() && !write_text(options.json, evaluation_json(story) + '\n')) {
    return OCPAN_OUTPUT;
  }
  return exit_code_of(story.found.judged);
}

}  // namespace ocpan

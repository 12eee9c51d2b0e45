#include "tools/refine/refine_run.h"

#include <string>
#include <vector>

#include "calfiles/selen360_cal_file.h"
#include "include/oc_pan_cal.h"
#include "platform/native_path.h"
#include "src/result_codes.h"
#include "tools/boards/printed_aside.h"
#include "tools/boards/rig_output.h"
#include "tools/messages.h"
#include "tools/refine/judge_refinement.h"
#include "tools/refine/refine_story.h"
#include "tools/text_output.h"
#include "tools/verdict.h"

namespace ocpan {
namespace {

// What stands in the way of the outputs; empty if nothing does.
std::string obstacle_to_outputs(const refine_options& options) {
  const auto why_not = [&](const std::string& output) {
    return why_not_rig_output(output, options.calibration, options.configuration);
  };
  if (const std::string reason = why_not(options.out); !reason.empty()) {
    return "--out: " + reason;
  }
  if (options.json.empty()) return {};
  if (native_path(options.json) == native_path(options.out)) {
    return "--json and --out name the same file; name two";
  }
  const std::string reason = why_not(options.json);
  return reason.empty() ? reason : "--json: " + reason;
}

bend_choice bend_of(const refine_options& options) {
  if (options.bend == "on") return bend_choice::bent;
  return options.bend == "off" ? bend_choice::flat : bend_choice::if_borne;
}

void refine(refine_story& story) {
  const calibrated_pictures& input = story.input;
  story.after = adjust_rig(input.models, input.details, input.boards,
                           {story.options.tie, bend_of(story.options), true});
  story.before = measure_rig(input.models, input.details, input.boards, {});
  tell_changes(story);
  judge_refinement(story);
}

bool save(const refine_story& story) {
  const selen360_cal_file file(story.after.models, story.input.details);
  int result = code::success;
  const std::string said = printed_aside([&] { result = file.save(story.options.out); });
  if (result == code::success) return true;
  complain(story.options.out, " couldn't be written; see that its folder can be written and that ",
           "the disk isn't full");
  return false;
}

}  // namespace

int run_refine(const refine_options& options) {
  if (const std::string obstacle = obstacle_to_outputs(options); !obstacle.empty()) {
    complain(obstacle);
    return OCPAN_OUTPUT;
  }
  refine_story story{options, {}, {}, {}, {}, {}, {}, {}, {}, {}};
  if (const int result =
          read_calibrated_pictures(story.input, options.calibration, options.configuration)) {
    return result & 0xFF;
  }
  if (story.input.boards.empty()) {
    complain("no board was found in any picture; oc_pan check ", options.configuration,
             " tells why");
    return exit_code_of(verdict::unusable);
  }
  refine(story);
  const bool usable = story.judged != verdict::unusable;
  if (usable && !save(story)) return OCPAN_OUTPUT;
  if (!options.quiet) print_refinement(story);
  for (const std::string& warning : story.warnings) complain("warning: ", warning);
  for (const std::string& fault : story.faults) complain("nothing is written: ", fault);
  if (!options.json.empty() && !write_text(options.json, refinement_json(story) + '\n')) {
    return OCPAN_OUTPUT;
  }
  return exit_code_of(story.judged);
}

std::string refined_name(const std::string& calibration) {
  const std::size_t folder = calibration.find_last_of("/\\");
  const std::size_t name = folder == std::string::npos ? 0 : folder + 1;
  const std::size_t dot = calibration.find_last_of('.');
  const std::size_t at = dot == std::string::npos || dot <= name ? calibration.size() : dot;
  return calibration.substr(0, at) + "_refined" + calibration.substr(at);
}

}  // namespace ocpan

#include "tools/cal_run.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "platform/native_path.h"
#include "platform/terminal.h"
#include "src/console.h"
#include "tools/cal_advice.h"
#include "tools/cal_checks.h"
#include "tools/cal_report.h"
#include "tools/messages.h"
#include "tools/progress_bar.h"
#include "tools/refine/refine_run.h"
#include "tools/text_output.h"

namespace ocpan {
namespace {

constexpr std::size_t last_lines_kept = 3;

// What the progress line says: pictures while they are read, afterwards the step.
std::string bar_of(const cal_progress& progress) {
  if (progress.step().empty()) return {};
  if (progress.done() < progress.named()) {
    return bar_text(progress.done(), progress.named(), "pictures");
  }
  return progress.step() + " ...";
}

cal_child_end run_and_show(const cal_options& options, const std::string& program,
                           cal_progress& progress, std::deque<std::string>& last_lines) {
  progress_line bar(std::cerr, standard_error_is_terminal());
  return run_cal_child(program, options.configuration, [&](const std::string& line) {
    progress.take(line);
    if (!line.empty()) last_lines.push_back(line);
    if (last_lines.size() > last_lines_kept) last_lines.pop_front();
    if (!options.quiet) {
      bar.clear();
      write_line(line);
    }
    bar.show(bar_of(progress));
  });
}

int exit_code_of(const cal_child_end& end) {
  if (end.reply) return end.reply->result & 0xFF;
  return end.process.how == child_end::kind::killed ? end.process.code : exit_child_lost;
}

// Takes the measures of an earlier run away, so that nobody takes them for this one's,
// should it be refused or ended.
void forget_json(const std::string& path) {
  std::error_code failure;
  const std::string file = native_path(path);
  if (std::filesystem::symlink_status(file, failure).type() ==
      std::filesystem::file_type::regular) {
    std::filesystem::remove(file, failure);
  }
}

// Refines what the run found; gives the exit code of that.
int refine_too(const cal_options& options, const std::string& calibration) {
  refine_options refinement;
  refinement.calibration = calibration;
  refinement.configuration = options.configuration;
  refinement.out = refined_name(calibration);
  print_line("");
  return run_refine(refinement);
}

}  // namespace

int run_cal(const cal_options& options, const std::string& program) {
  const output_name output = look_for_output(options.configuration);
  std::string obstacle = obstacle_to_json(options, output);
  if (obstacle.empty()) {
    forget_json(options.json);
    obstacle = obstacle_to_calibration(options.configuration, output);
  }
  if (!obstacle.empty()) {
    complain(obstacle);
    return OCPAN_OUTPUT;
  }
  const debug_folder_holder folder;
  const cal_outputs outputs(output.text);
  cal_progress progress;
  std::deque<std::string> last_lines;
  const cal_child_end end = run_and_show(options, program, progress, last_lines);
  const cal_story story = {end, progress, outputs, last_lines};
  int exit_code = exit_code_of(end);
  if (exit_code != OCPAN_SUCCESS && options.quiet) {
    for (const std::string& line : last_lines) complain("the library said: ", line);
  }
  warn_of_doubts(story, folder.failure());
  if (exit_code == OCPAN_SUCCESS) {
    print_cal_table(story);
  } else {
    explain_failure(story, options, exit_code);
  }
  const bool calibrated = exit_code == OCPAN_SUCCESS;
  if (!options.json.empty() && !write_text(options.json, cal_json(story, exit_code) + '\n') &&
      exit_code == OCPAN_SUCCESS) {
    exit_code = OCPAN_OUTPUT;
  }
  if (options.refine && calibrated) {
    const int refined = refine_too(options, output.text);
    if (exit_code == OCPAN_SUCCESS) exit_code = refined;
  }
  return exit_code;
}

}  // namespace ocpan

#include "tools/cal_run.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "platform/native_path.h"
#include "platform/terminal.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "tools/cal_report.h"
#include "tools/library_result.h"
#include "tools/messages.h"
#include "tools/output_check.h"
#include "tools/output_name.h"
#include "tools/progress_bar.h"

namespace ocpan {
namespace {

constexpr std::size_t last_lines_kept = 3;

bool same_file(const std::string& a, const std::string& b) {
  std::error_code not_there;
  return std::filesystem::equivalent(native_path(a), native_path(b), not_there);
}

// The configuration's output, as far as it can be told without the library. A pipe is left
// alone, since it can be read only once.
output_name look_for_output(const std::string& configuration) {
  std::error_code failure;
  if (!std::filesystem::is_regular_file(native_path(configuration), failure)) return {};
  std::ifstream in = open_input(configuration);
  return find_output_name(in);
}

// Says what stands in the way of an output before hours of work go into it. Gives false
// then.
bool outputs_are_writable(const output_name& output, const cal_options& options) {
  if (!options.json.empty()) {
    if (same_file(options.json, options.configuration)) {
      complain("--json names the configuration itself; name another file");
      return false;
    }
    if (const std::string reason = why_not_writable(options.json); !reason.empty()) {
      complain("--json: ", reason);
      return false;
    }
  }
  if (!output.known) return true;
  if (output.text.empty()) {
    complain(options.configuration,
             " names no output; add a line output_filename: 'NAME' ahead of camera_info");
    return false;
  }
  if (same_file(output.text, options.configuration)) {
    complain("output_filename in ", options.configuration,
             " names the configuration itself; name another file");
    return false;
  }
  for (const char* ending : {"", "_distance.csv", "_QA_Measures.txt"}) {
    const std::string reason = why_not_writable(output.text + ending);
    if (reason.empty()) continue;
    complain("output_filename in ", options.configuration, ": ", reason);
    return false;
  }
  return true;
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
    if (!progress.step().empty() && progress.named() > 0) {
      bar.show(bar_text(progress.done(), progress.named(), "pictures") + "  " + progress.step());
    }
  });
}

void explain_result(int result, const cal_options& options) {
  complain("the calibration ended with ", result, ": ", meaning_of(result));
  std::ifstream configuration = open_input(options.configuration);
  if (!configuration) {
    complain("the configuration ", options.configuration,
             " can't be opened; check its name and that it may be read");
    return;
  }
  std::error_code failure;
  switch (result) {
    case OCPAN_INVALID:
      complain(
          "a configuration has 2 to 8 cameras of lens 0, 1 or 2, and boards of at least "
          "3 by 3 inner corners; correct ",
          options.configuration);
      break;
    case OCPAN_OUTPUT:
      complain("see that the disk isn't full and the folder of output_filename is there");
      break;
    case OCPAN_MEMORY:
      complain("close other programs or give the machine more memory");
      break;
    default:
      complain("the library's last line above tells what to correct in ", options.configuration,
               "; its relative names start from the working folder ",
               std::filesystem::current_path(failure).string());
  }
}

void explain_broken_off(const cal_story& story, int exit_code) {
  const child_end& process = story.end.process;
  if (process.how == child_end::kind::not_started) {
    complain("the calibration couldn't be started (", process.words,
             "); free memory or end other processes, then run it again");
  } else if (process.interrupted) {
    complain("interrupted (", process.words, "); run it again to calibrate");
  } else if (process.how == child_end::kind::killed) {
    complain("the calibration was ended by ", process.words,
             "; if nobody did that, the machine may be out of memory, or a picture may have "
             "crashed its decoder: the last picture named above is the first to look at");
  } else {
    complain("the calibration ended with ", process.words, " without a result; run it again");
  }
  const auto& files = story.outputs.files();
  const bool any = std::any_of(files.begin(), files.end(), [&](const std::string& file) {
    return story.outputs.written(file);
  });
  complain(any ? "files were written, perhaps not to their end; don't use them"
               : "no calibration file was written",
           "; exit code ", exit_code);
}

int exit_code_of(const cal_child_end& end) {
  if (end.reply) return end.reply->result & 0xFF;
  return end.process.how == child_end::kind::killed ? end.process.code : exit_child_lost;
}

void warn_of_doubts(const cal_story& story, const debug_folder_holder& folder) {
  if (!folder.failure().empty()) {
    complain("warning: no debug pictures, since the folder ", debug_folder,
             " can't be made in the working folder (", folder.failure(), ")");
  }
  if (story.end.reply && story.end.reply->result == OCPAN_SUCCESS &&
      story.end.reply->measures.matched_point_count == 0) {
    complain(
        "warning: no board was found in any picture, so the calibration holds nothing but "
        "its start values; look at the pictures in ",
        debug_folder, " and check board_shape (inner corners)");
  }
}

bool write_json(const std::string& path, const std::string& text) {
  std::ofstream out = open_output(path);
  out << text << '\n';
  if (finish_output(out, path)) return true;
  complain(native_path(path), " couldn't be written; free space on its disk");
  return false;
}

}  // namespace

int run_cal(const cal_options& options, const std::string& program) {
  const output_name output = look_for_output(options.configuration);
  if (!outputs_are_writable(output, options)) return OCPAN_OUTPUT;
  const debug_folder_holder folder;
  const cal_outputs outputs(output.text);
  cal_progress progress;
  std::deque<std::string> last_lines;
  const cal_child_end end = run_and_show(options, program, progress, last_lines);
  const cal_story story = {end, progress, outputs};
  int exit_code = exit_code_of(end);
  if (exit_code != OCPAN_SUCCESS && options.quiet) {
    for (const std::string& line : last_lines) complain("the library said: ", line);
  }
  warn_of_doubts(story, folder);
  if (!end.reply) {
    explain_broken_off(story, exit_code);
  } else if (exit_code != OCPAN_SUCCESS) {
    explain_result(end.reply->result, options);
  } else {
    print_cal_table(story);
  }
  if (!options.json.empty() && !write_json(options.json, cal_json(story, exit_code)) &&
      exit_code == OCPAN_SUCCESS) {
    exit_code = OCPAN_OUTPUT;
  }
  return exit_code;
}

}  // namespace ocpan

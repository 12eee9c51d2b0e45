#include "tools/prod_run.h"

#include <ctime>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "tools/cal_outputs.h"
#include "tools/library_result.h"
#include "tools/messages.h"
#include "tools/output_check.h"
#include "tools/prod_log.h"
#include "tools/prod_stage.h"
#include "tools/prod_verdict.h"
#include "tools/text_output.h"

namespace ocpan {
namespace {

bool same_file(const std::string& a, const std::string& b) {
  std::error_code not_there;
  return std::filesystem::equivalent(native_path(a), native_path(b), not_there);
}

// Why the run's files can't be written, empty if they can. The output and the log must not
// be one of the files that are read: a doubtful run would replace them.
std::string obstacle_to_outputs(const prod_options& options) {
  const prod_job& job = options.job;
  std::vector<std::string> inputs = job.pictures;
  inputs.push_back(job.calibration);
  if (!options.limits.empty()) inputs.push_back(options.limits);
  for (const std::string& input : inputs) {
    if (same_file(job.output, input)) return "OUTPUT names the input " + input + "; name another";
    if (!options.log.empty() && same_file(options.log, input)) {
      return "--log names the input " + input + "; name another file";
    }
    if (!options.json.empty() && same_file(options.json, input)) {
      return "--json names the input " + input + "; name another file";
    }
  }
  if (const std::string reason = why_not_writable(job.output); !reason.empty()) {
    return "OUTPUT: " + reason;
  }
  if (!options.json.empty()) {
    if (native_path(options.json) == native_path(job.output) ||
        native_path(options.json) == native_path(options.log)) {
      return "--json names the OUTPUT or the log; name another file";
    }
    if (const std::string reason = why_not_writable(options.json); !reason.empty()) {
      return "--json: " + reason;
    }
  }
  if (options.log.empty()) return {};
  if (options.log == job.output || same_file(options.log, job.output)) {
    return "--log names the OUTPUT; name another file";
  }
  const std::string reason = obstacle_to_log(options.log, job.pictures.size());
  return reason.empty() ? reason : "--log: " + reason;
}

// Gives a result code.
int load_limits(std::vector<measure_limit>& limits, const std::string& path) {
  if (path.empty()) return OCPAN_SUCCESS;
  std::ifstream in = open_input(path);
  if (!in) {
    complain("--limits: ", path, " can't be opened; check its name and that it may be read");
    return OCPAN_INPUT;
  }
  const std::string text{std::istreambuf_iterator<char>(in), {}};
  const std::string problem = read_limits(limits, text);
  if (problem.empty()) return OCPAN_SUCCESS;
  complain("--limits: ", path, " can't be used: ", problem);
  return OCPAN_MALFORMED;
}

std::string time_now() {
  const std::time_t now = std::time(nullptr);
  char text[32] = "";
  if (const std::tm* utc = std::gmtime(&now)) {
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", utc);
  }
  return text;
}

prod_child_end run_and_show(const prod_options& options, const std::string& program) {
  const stage_display stages;
  return run_prod_child(program, options.job);
}

void print_results(const prod_reply& reply, const std::string& output) {
  print_line("Largest reprojection error  ", reply.results[0], " pixels");
  print_line("Mean reprojection error     ", reply.results[1], " pixels");
  print_line("Points                      ", reply.results[2]);
  print_line("Refined calibration         ", output);
  print_line("");
  std::ifstream report = open_input(prod_report);
  for (std::string line; read_text_line(report, line);) write_line(line);
}

void list_debug_pictures() {
  const std::vector<std::string> names = prod_debug_pictures();
  print_line("Debug pictures in ", debug_folder, ": ", names.size());
  for (const std::string& name : names) print_line("  ", name);
}

void explain(const prod_child_end& end) {
  if (!end.reply) {
    complain("the run ended without a result (", end.process.words, "); run it again");
    return;
  }
  const int result = end.reply->result;
  complain("the run ended with ", result, ": ", meaning_of(result));
  if (result == OCPAN_FAILURE) {
    complain(
        "a picture shows no corner of the pattern, or a camera has nothing in common with "
        "the others; look at the pictures in ",
        debug_folder);
  } else if (result == OCPAN_OUTPUT) {
    complain("see that OUTPUT can be written and that the disk isn't full");
  } else if (result == OCPAN_MEMORY) {
    complain("close other programs or give the machine more memory");
  } else {
    complain("the library's line above tells what to correct");
  }
}

// Says what a failed run leaves where a calibration is expected.
void tell_of_output(const std::string& output) {
  std::error_code failure;
  if (std::filesystem::exists(native_path(output), failure)) {
    complain("no calibration was written, ", output, " is of an earlier run");
  } else {
    complain("no calibration was written");
  }
}

int exit_code_of(const prod_child_end& end) {
  if (end.reply) return end.reply->result & 0xFF;
  return end.process.how == child_end::kind::killed ? end.process.code : exit_child_lost;
}

// Tells what is wrong with the outcome of a run that ended well, and keeps it as the entry's
// reasons. Gives the exit code.
int judge(prod_log_entry& entry, const std::vector<measure_limit>& limits, std::size_t cameras) {
  const auto tell = [&](const char* verdict, const std::string& reason) {
    complain(verdict, ": ", reason);
    entry.reasons.push_back(reason);
  };
  if (!entry.measures) {
    tell("doubtful", std::string("the report ") + prod_report +
                         " is missing or broken; free space on its disk");
    return exit_doubtful;
  }
  const std::vector<std::string> doubts = doubts_about(*entry.measures, cameras);
  for (const std::string& doubt : doubts) tell("doubtful", doubt);
  const std::vector<std::string> outside = outside_limits(limits, *entry.measures);
  for (const std::string& limit : outside) tell("bad", limit);
  if (!outside.empty()) return exit_outside_limits;
  return doubts.empty() ? OCPAN_SUCCESS : exit_doubtful;
}

const char* verdict_of(int exit_code) {
  switch (exit_code) {
    case OCPAN_SUCCESS:
      return "good";
    case exit_doubtful:
      return "doubtful";
    case exit_outside_limits:
      return "bad";
    default:
      return "failed";
  }
}

}  // namespace

int run_prod(const prod_options& options, const std::string& program) {
  std::vector<measure_limit> limits;
  if (const int code = load_limits(limits, options.limits); code != OCPAN_SUCCESS) return code;
  if (const std::string obstacle = obstacle_to_outputs(options); !obstacle.empty()) {
    complain(obstacle);
    return OCPAN_OUTPUT;
  }
  const debug_folder_holder folder;
  std::string kept = folder.failure();
  if (kept.empty() && !(kept = forget_earlier_run()).empty()) kept += " can't be removed";
  if (!kept.empty()) {
    complain("the folder ", debug_folder, " for report and debug pictures can't be used (", kept,
             "); make it writable");
    return OCPAN_OUTPUT;
  }
  const prod_child_end end = run_and_show(options, program);
  int exit_code = exit_code_of(end);
  prod_log_entry entry = {time_now(), options.serial, "", 0, std::nullopt};
  if (exit_code == OCPAN_SUCCESS) {
    std::ifstream report = open_input(prod_report);
    entry.measures = read_production_report(report);
    print_results(*end.reply, options.job.output);
    list_debug_pictures();
    exit_code = judge(entry, limits, options.job.pictures.size());
  } else {
    explain(end);
    tell_of_output(options.job.output);
    list_debug_pictures();
  }
  entry.exit_code = exit_code;
  entry.verdict = verdict_of(exit_code);
  print_line("Verdict: ", entry.verdict);
  if (!options.log.empty() && !append_to_log(options.log, entry, options.job.pictures.size())) {
    complain("--log: ", options.log, " couldn't be written; free space on its disk");
    if (exit_code == OCPAN_SUCCESS) exit_code = OCPAN_OUTPUT;
  }
  if (!options.json.empty() && !write_text(options.json, prod_json(entry)) &&
      exit_code == OCPAN_SUCCESS) {
    exit_code = OCPAN_OUTPUT;
  }
  return exit_code;
}

}  // namespace ocpan

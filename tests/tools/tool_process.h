#pragma once

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "platform/child_process.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"
#include "tools/command_line.h"

namespace ocpan::testing {

struct tool_run {
  int code = -1;
  std::string out;
  std::string err;
};

// Runs a shell script in which "$0" is the tool as built, in the working folder.
inline tool_run run_shell(const std::string& script) {
  const temp_folder folder;
  const std::string err = folder.file("err");
  tool_run run;
  // The channel that run_child appends is the script's $2.
  const child_end end = run_child("/bin/sh", {"-c", "{ " + script + "\n} 2>\"$1\"", TOOL_PATH, err},
                                  [&](std::string_view bytes) { run.out += bytes; });
  run.code = end.code;
  run.err = read_file(err);
  return run;
}

// Runs the tool with arguments as a shell takes them.
inline tool_run run_tool(const std::string& arguments) {
  return run_shell("exec \"$0\" " + arguments);
}

// Runs a command line within this process: many times faster. Arguments end at blanks.
inline tool_run run_here(const std::string& arguments) {
  std::istringstream words("oc_pan " + arguments);
  const std::vector<std::string> texts{std::istream_iterator<std::string>(words), {}};
  std::vector<const char*> argv;
  for (const std::string& text : texts) argv.push_back(text.c_str());
  tool_run run;
  run.out = printed_by([&] {
    ::testing::internal::CaptureStderr();
    run.code = run_command_line(static_cast<int>(argv.size()), argv.data());
    run.err = ::testing::internal::GetCapturedStderr();
  });
  return run;
}

}  // namespace ocpan::testing

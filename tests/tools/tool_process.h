#pragma once

#include <string>

#include "platform/child_process.h"
#include "tests/support/temp_folder.h"

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

}  // namespace ocpan::testing

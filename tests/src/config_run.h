#pragma once

#include <cerrno>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "src/read_config.h"
#include "tests/support/opening_error.h"
#include "tests/support/temp_folder.h"

namespace ocpan::testing {

// What a read of a configuration gave.
struct config_run {
  std::vector<camera_details> cameras;
  std::vector<set_config> sets;
  std::string output_file;
  string_pool pool;
  std::string printed;
  int result = 0;
};

// Takes the output off std::cout without a file between, so that thousands of runs are quick.
inline config_run run_config_file(const std::string& path) {
  config_run run;
  std::ostringstream printed;
  errno = 0;  // see opening_error
  std::streambuf* const before = std::cout.rdbuf(printed.rdbuf());
  run.result = read_config(run.cameras, run.sets, run.output_file, run.pool, path.c_str());
  std::cout.rdbuf(before);
  run.printed = printed.str();
  return run;
}

// Reads a configuration of this text, from a file outside the working folder.
inline config_run run_config(const std::string& text) {
  const temp_folder folder;
  write_file(folder.file("rig.txt"), text);
  return run_config_file(folder.file("rig.txt"));
}

// The files of a camera of a set, as strings.
inline std::vector<std::string> files_of(const set_camera& camera) {
  return {camera.files.begin(), camera.files.end()};
}

}  // namespace ocpan::testing

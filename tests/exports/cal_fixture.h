#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "include/oc_pan_cal.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan::testing {

// Calls ocPAN_Cal from a working folder of its own.
class Cal : public ::testing::Test {
 protected:
  int run(const std::string& config) {
    int result = 99;
    printed = printed_by([&] { result = ocPAN_Cal(config.c_str(), &summary); });
    return result;
  }
  int run_text(const std::string& text) {
    write_file("rig.txt", text);
    return run("rig.txt");
  }
  bool has_line(const std::string& line) const {
    return ("\n" + printed).find("\n" + line + "\n") != std::string::npos;
  }

  working_folder folder;
  qa_summary summary = {-7, -7, -7, -7, -7};
  std::string printed;
};

}  // namespace ocpan::testing

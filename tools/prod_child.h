#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "include/oc_pan_cal.h"
#include "platform/child_process.h"

namespace ocpan {

// The hidden command by which the tool starts itself to call the library.
inline constexpr const char* prod_child_command = "call-ocPAN_CalProd";

struct prod_job {
  std::string calibration;
  std::string output;
  float radius_metres = 0;
  std::vector<std::string> pictures;  // in camera order
};

// What the library's call gave.
struct prod_reply {
  int result = OCPAN_FAILURE;
  std::array<double, 3> results = {};  // largest and mean error in pixels, points
};

// Runs a production job in a child process, the tool itself, and passes on what it prints.
struct prod_child_end {
  child_end process;
  std::optional<prod_reply> reply;  // nothing if the child broke off
};
prod_child_end run_prod_child(const std::string& program, const prod_job& job);

// What the child does: calls the library and replies. Gives its exit code.
int call_prod_and_reply(const prod_job& job, const std::string& channel);

}  // namespace ocpan

#pragma once

#include <string>

namespace ocpan {

struct refine_options {
  std::string calibration;
  std::string configuration;
  std::string out;
  double tie = 0;             // 0 for none
  std::string bend = "auto";  // or "on" or "off"
  std::string json;           // file for the numbers, empty for none
  bool quiet = false;         // print warnings and failures only
};

// Refines a calibration on the pictures of a configuration, writes the result and tells what
// it came to. Gives the exit code: an exported one, or that of
// the verdict; nothing is written if that is unusable.
int run_refine(const refine_options& options);

// The name of the refined calibration beside another: rig.cal gives rig_refined.cal.
std::string refined_name(const std::string& calibration);

}  // namespace ocpan

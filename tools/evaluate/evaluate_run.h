#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "tools/evaluate/calibrated_pictures.h"
#include "tools/evaluate/evaluation.h"
#include "tools/evaluate/hold_out.h"
#include "tools/evaluate/rig_uncertainty.h"

namespace ocpan {

struct evaluate_options {
  std::string calibration;
  std::string configuration;
  std::string json;          // empty for none
  std::size_t hold_out = 0;  // parts; 0 for none
  bool refine = false;       // also refine the calibrations from parts
  bool quiet = false;        // verdict and findings only
};

// All that a run of the command found.
struct evaluate_story {
  const evaluate_options& options;
  calibrated_pictures input;
  evaluation found;
  std::optional<rig_uncertainty> uncertainty;  // as evaluate_pictures tells it
  std::optional<hold_out> tested;
};

// Runs the command; gives its exit code.
int run_evaluate(const evaluate_options& options);

// Prints tables, findings and verdict to standard output.
void print_evaluation(const evaluate_story& story);

// The same as JSON.
std::string evaluation_json(const evaluate_story& story);

}  // namespace ocpan

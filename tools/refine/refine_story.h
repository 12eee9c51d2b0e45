#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/adjust/adjust_rig.h"
#include "tools/evaluate/calibrated_pictures.h"
#include "tools/evaluate/evaluation.h"
#include "tools/refine/refine_run.h"
#include "tools/verdict.h"

namespace ocpan {

// The residuals of some views before and after.
struct residual_change {
  residual_spread before, after;  // pixels
};

struct camera_change {
  residual_change residuals;
  std::size_t boards = 0;          // that the camera saw and that count
  double picture_uncertainty = 0;  // RMS over the picture, pixels
  bool linked = true;              // to camera 0, by boards that count
  double turn_uncertainty = 0;     // against camera 0, degrees; not-a-number unless linked
};

// Two cameras and the boards that both saw.
struct pair_change {
  std::size_t first, second;
  residual_change residuals;
  std::size_t boards = 0;
  std::size_t set_aside = 0;  // views of these boards by the two
};

// A board or a corner that doesn't fit.
struct misfit {
  std::size_t board, camera;
  std::string picture;
  int corner = -1;    // -1 for the whole view
  double pixels = 0;  // off; of a view its median
};

// Everything a refinement can be told from.
struct refine_story {
  const refine_options& options;
  calibrated_pictures input;
  adjusted_rig before, after;
  residual_change all;
  std::vector<camera_change> cameras;
  std::vector<pair_change> pairs;
  std::vector<misfit> views;    // set aside
  std::vector<misfit> corners;  // that hardly count, the farthest first
  std::vector<std::string> warnings;
  std::vector<std::string> faults = {};  // for which nothing is written
  verdict judged = verdict::good;
};

// Fills what follows from the two fits: all but the inputs and the fits themselves. Residuals
// are those of all corners of the views that aren't set aside, however little a corner counts.
void tell_changes(refine_story& story);

void print_refinement(const refine_story& story);
std::string refinement_json(const refine_story& story);

}  // namespace ocpan

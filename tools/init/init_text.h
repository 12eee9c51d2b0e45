#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/init/guess_lens.h"
#include "tools/init/rig_layout.h"

namespace ocpan {

// All that a configuration is written from.
struct init_plan {
  std::vector<picture_series> series;
  rig_layout layout;
  std::vector<lens_guess> lenses;  // per camera
  std::pair<int, int> board;       // inner corners; 0 and 0 if it couldn't be told
  std::string output;              // the calibration's name, with "/"
};

// The configuration. Its comments hold neither a ":" nor a "-", which the library would take
// for a key or the beginning of a set.
[[nodiscard]] std::string init_text(const init_plan& plan);

}  // namespace ocpan

#pragma once

#include <string>

#include "simulator/rig_description.h"

namespace ocpan {

// Reads the cameras of a rig from a calibration file or, if the text begins with "{", from a
// description. A calibration's models are taken for the truth, and it has no sets. Gives an
// error text, empty if all is well; of a calibration that can't be read the calibration file
// prints its own complaint too.
//
//   path   either kind of slash
[[nodiscard]] std::string read_rig_or_calibration(rig_description& description,
                                                  const std::string& path);

}  // namespace ocpan

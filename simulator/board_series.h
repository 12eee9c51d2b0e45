#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "simulator/board_poses.h"
#include "simulator/rig_description.h"

namespace ocpan {

// Told after each picture: pictures done and pictures in all.
using series_progress = std::function<void(std::size_t done, std::size_t total)>;

// The name of a picture within its set's folder: "cam2_07.png".
//
//   camera   index from 0
std::string picture_name(const rig_description& description, const series_description& series,
                         std::size_t camera, int frame);

// The configuration that calibrates the series written to a folder. Paths in it are
// absolute, for a calibration takes relative ones from where it is run.
std::string configuration_text(const rig_description& description, const std::string& folder);

// Renders the series of a rig into a folder, which is made if need be:
//
//   pictures/SET/camN_FF.png   the pictures of each set
//   calibration.txt            the configuration; its output is found.cal in the folder
//   truth.cal                  the true calibration, to six digits
//   rig.json                   the description, with the truth in full
//
//   progress   may be empty
//
// What was there is replaced; older pictures that no longer belong to a set go away, so
// that they can't join its series. Gives an error text, empty if all is written.
[[nodiscard]] std::string write_board_series(const rig_description& description,
                                             const std::string& folder,
                                             const series_progress& progress);

}  // namespace ocpan

#pragma once

#include <memory>

#include "calfiles/cal.h"

namespace ocpan {

// Makes a calibration and loads it; refuses one that doesn't hold 1 to 8 cameras.
//
//   out_object      null after a refused number of cameras; what was read so far stays in
//                   it when loading fails
//   file_name       not null, either kind of slash
//   use_file_class  a calibration file of this library; otherwise a panorama project file
//   sphere_radius   for a calibration file only: the radius of both mappings, in units
//                   of 1000 model units
//
// Prints why it fails. Gives an internal result code.
[[nodiscard]] int create_cal(std::unique_ptr<cal>& out_object, const char* file_name,
                             bool use_file_class, float sphere_radius);

}  // namespace ocpan

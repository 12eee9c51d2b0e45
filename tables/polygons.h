#pragma once

#include <string>

namespace ocpan {

// Makes the polygon of every camera of a calibration: 128 directions around all that the
// camera's mask covers, a little enlarged.
//
//   cal_file_name    a calibration, either kind of slash
//   mask_prefix      the masks are mask_prefix_0.png and so on, of the cameras' sizes; all
//                    pixels above 0 count, unlike in the lookup tables
//   output_prefix    the polygons are output_prefix_0.bin and so on, written in place
//   sphere_radius    where the pixels' points lie, in units of 1000 model units; a project
//                    file doesn't need it
//   use_file_class   the calibration is a file of this library, not a project file
//
// Stops at the first camera that fails; the files of those before it stand. Prints why.
// Gives an internal result code. Throws std::out_of_range for a calibration file that
// lacks a camera's centre.
[[nodiscard]] int generate_polygons(const char* cal_file_name, const std::string& mask_prefix,
                                    const std::string& output_prefix, float sphere_radius,
                                    bool use_file_class);

}  // namespace ocpan

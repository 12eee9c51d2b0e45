#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "calfiles/cal.h"

namespace ocpan {

// Makes the lookup table of every camera of a calibration: for each direction of the cube
// its position in the camera's picture and the weight that the camera has there.
//
//   cal_file_name    a calibration, either kind of slash
//   mask_prefix      the masks are mask_prefix_0.png and so on, of the cameras' sizes;
//                    pixels above 128 are the camera's region
//   output_prefix    the tables are output_prefix_0.bin and so on, written in place
//   sphere_radius    where the directions' points lie, in units of 1000 model units; a
//                    project file doesn't need it
//   face_size        129 or 253
//   use_file_class   the calibration is a file of this library, not a project file
//
// Stops at the first camera that fails; the tables of those before it stand. Prints why.
// Gives an internal result code.
[[nodiscard]] int generate_lookup_tables(const char* cal_file_name, const std::string& mask_prefix,
                                         const std::string& output_prefix, float sphere_radius,
                                         int face_size, bool use_file_class);

// The entries of one camera's file, in file order.
//
//   positions   a block per face: pixels x, y of each sample
//   mask        CV_8UC1, the region's pixels above 128
std::vector<std::uint64_t> lut_entries(const std::vector<point_block>& positions,
                                       const cv::Mat& mask);

}  // namespace ocpan

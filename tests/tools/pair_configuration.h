#pragma once

#include <string>

namespace ocpan::testing {

// The text of a configuration of two cameras, whose pictures in a folder are called a1.png,
// a2.png and so on of the first, b1.png and so on of the second.
inline std::string pair_configuration(const std::string& folder, const std::string& output) {
  return "base_directory: '" + folder + "'\noutput_filename: '" + output +
         "'\ncamera_info:\n"
         "  - width: 160, height: 120, hfov: 60, lens: 0\n"
         "  - width: 160, height: 120, hfov: 60, lens: 0\n"
         "calibration_sets:\n"
         "  - set_name: 'one', board_scale: 25.0\n    cameras: [1]\n"
         "    filename_patterns: ['^a\\d\\.png$']\n    board_shape: [4, 3]\n"
         "  - set_name: 'two', board_scale: 25.0\n    cameras: [2]\n"
         "    filename_patterns: ['^b\\d\\.png$']\n    board_shape: [4, 3]\n"
         "  - set_name: 'both', board_scale: 25.0\n    cameras: [1, 2]\n"
         "    filename_patterns: ['^a\\d\\.png$', '^b\\d\\.png$']\n    board_shape: [4, 3]\n";
}

}  // namespace ocpan::testing

#pragma once

#include <string>

#include "simulator/rig_description.h"

namespace ocpan {

// A rig description as JSON text: cameras count from 1 as in a configuration, sets go by
// their names, and every number survives a round trip.
//
//   {"seed": 1,
//    "board": {"width": 9, "height": 6, "square": 25.0},
//    "cameras": [{"width": 960, "height": 720, "hfov": 80.0, "lens": 0,
//                 "model": {"C_0": 0.0, ..., "L": 1.0}}],
//    "sets": [{"name": "cam1", "cameras": [1], "frames": 10}],
//    "poses": {"min_distance": 350, "max_distance": 800, "tilt_degrees": 40, "roll_degrees": 30},
//    "rendering": {"blur": 0.7, "noise": 2, "uneven_light": 0.2, "format": "png"},
//    "faults": [{"kind": "missing_board", "set": "cam1", "camera": 1, "frame": 3}]}
//
// A fault's kind is missing_board, truncated_file or missing_file; its frame counts from 0.
std::string rig_to_json(const rig_description& description);

// Reads such a text. "cameras" and in them all keys of the example are required, in a model
// all but LAMBDA; the rest has the defaults of rig_description. Gives an error text that
// names the key, empty if all is well; a key that is not known is an error too.
[[nodiscard]] std::string rig_from_json(rig_description& description, const std::string& text);

// The same from and to a file.
[[nodiscard]] std::string read_rig_file(rig_description& description, const std::string& path);
[[nodiscard]] std::string write_rig_file(const rig_description& description,
                                         const std::string& path);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

#include "src/camera_details.h"
#include "src/set_config.h"
#include "tools/check/finding.h"

namespace ocpan {

// A place in a configuration, both numbers from 1; a line of 0 is the file as a whole.
struct text_place {
  std::size_t line = 0;
  std::size_t column = 0;
};

// A key as it stands in a configuration, with what the library reads as its value.
struct written_key {
  text_place place;     // of the key's first letter
  std::string key;      // without blanks and "-" in front
  text_place value_at;  // of the value's first character
  std::string value;    // from where the library reads to where it stops
  std::string written;  // all between the ":" and the end of the value
};

struct written_camera {
  text_place place;
  std::vector<written_key> keys;
  camera_details read;
};

struct written_set {
  text_place place;
  std::vector<written_key> keys;
  std::string base_directory;  // at the set's end, with a backslash behind it
  bool refused = false;        // a key of it is among the refusals
  set_config read;             // as the library has it; points into written_config::pool
};

// A configuration with the places of all that stands in it.
struct written_config {
  std::string file;  // as given
  std::vector<written_key> top;
  std::vector<written_camera> cameras;
  std::vector<written_set> sets;
  std::vector<written_key> passed_over;  // lines without a ":" that are no comment, as a key
  std::string output_file;               // with backslashes; empty if none is named
  string_pool pool;
  std::vector<finding> refusals;  // what the library ends with a failure for
};

// "rig.txt:12:5"
std::string place_text(const written_config& config, const text_place& place);

// Walks a configuration with the library's own functions for its lines, key by key, and
// goes on behind each fault as if it weren't there. There are refusals if and only if a
// calibration run would end with a failure ahead of the first picture, or without any set
// because a camera lacks something, which ends the reading in silence. Prints nothing.
//
//   file   the name for the places
//   in     the configuration; the folders that it names are listed
[[nodiscard]] written_config walk_configuration(const std::string& file, std::istream& in);

}  // namespace ocpan

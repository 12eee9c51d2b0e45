#pragma once

#include <string>
#include <vector>

#include "src/set_config.h"

namespace ocpan {

// The sets section of a configuration as far as it was read.
struct set_section {
  std::vector<set_config>& sets;  // the last one is being read
  string_pool& pool;
  std::string base_directory = {};             // of the top section: empty or with a "\" at its end
  std::vector<std::string> base_listing = {};  // sorted

  // Of the last set:
  std::vector<std::string> subdirectories = {};  // each with a "\" at its end
  bool name_seen = false;
  bool subdir_seen = false;
  bool cameras_seen = false;
  bool patterns_seen = false;
  bool shape_seen = false;
  bool scale_seen = false;
};

// Reads a line of the section and lists the folders that it names. Gives 0, or with a
// message the code that the whole reading ends with; a board side below 3 has no message.
[[nodiscard]] int read_set_line(set_section& section, const std::string& line);

// Checks at the end of the file that the last set, if there is one, has all it needs.
[[nodiscard]] int check_last_set(const set_section& section);

}  // namespace ocpan

#pragma once

#include <istream>
#include <string>

namespace ocpan {

// What a light look at the top section of a calibration configuration tells.
struct output_name {
  bool known = false;  // the section was read to its end, as the library will read it
  std::string text;    // the value of output_filename with backslashes, empty if there is none
};

// Looks for the output's name without reading the rest and without printing. Whatever is
// wrong with the section is left to the library, which tells it better: `known` is false.
output_name find_output_name(std::istream& configuration);

}  // namespace ocpan

#pragma once

#include <string>
#include <vector>

namespace ocpan {

// Pictures of one folder whose names differ in one number only.
struct picture_series {
  std::string folder;              // absolute, with "/" and none at its end
  std::string before;              // what the names have ahead of the number
  std::string after;               // and behind it, the ending included
  std::vector<std::string> names;  // sorted as the library sorts them
  std::vector<long long> numbers;  // of the names
};

// All series in a folder and the folders in it, in the order of folders and names. Names
// that differ in several numbers make a series for each value of all but the number with
// the most values (the last of equals). Links to folders are not followed. Gives false if
// the folder can't be listed.
//
//   lone   gets the pictures that belong to no series of at least three
[[nodiscard]] bool find_series(std::vector<picture_series>& series, std::vector<std::string>& lone,
                               const std::string& folder);

// The pattern, in the library's dialect, that the names of a series fit. A sign that has a
// meaning there is replaced by ".", any character.
[[nodiscard]] std::string pattern_of(const picture_series& series);

}  // namespace ocpan

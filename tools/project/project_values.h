#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/project/project_lines.h"

namespace ocpan {

// The keys of an "i" line that hold one number, and all that the library reads.
inline constexpr const char* image_number_keys = "whfvyprabcdegt";
inline constexpr const char* image_keys = "whfvyprabcdegtC";

// A crop in the picture's pixels.
struct project_crop {
  double left = 0, right = 0, top = 0, bottom = 0;
};

// What an "i" line tells of a camera, links followed.
struct project_camera {
  std::map<char, double> numbers;      // by key, one for each of image_number_keys
  std::map<char, std::string> copied;  // by key, what stands for a link
  std::optional<project_crop> crop;
};

// A number that fills the whole text and is finite.
std::optional<double> number_in(const std::string& text);

// A number as a text that reads back as the same one.
std::string exact_text(double value);

// The text that a key of an image has, links to other images followed to their end. None
// where the key is missing there, or where a link leads nowhere, which is a finding.
std::optional<std::string> linked_text(const std::vector<project_line*>& images, std::size_t image,
                                       const std::string& key,
                                       std::vector<project_finding>& findings);

// Reads the camera of an image and says what the library's dialect can't hold of it.
project_camera read_project_camera(const std::vector<project_line*>& images, std::size_t image,
                                   std::vector<project_finding>& findings);

}  // namespace ocpan

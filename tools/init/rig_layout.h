#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/init/picture_series.h"

namespace ocpan {

// A set as it shall stand in the configuration: a series for each of its cameras.
struct layout_set {
  std::string name;
  std::vector<std::size_t> cameras;  // into rig_layout::cameras, ascending
  std::vector<std::size_t> series;   // into the series, side by side with the cameras
};

// Which series belong to which camera, and which were shot together.
struct rig_layout {
  std::vector<std::string> cameras;  // what their pictures' names or folders have in common
  std::vector<layout_set> sets;
  std::vector<std::size_t> left_out;  // series whose names tell no camera, or no new one
  std::vector<std::string> doubts;    // whole sentences
};

// Tells cameras from sets by names alone: a folder, or what the names of a series have in
// common, that looks like a camera's (cam1, left, ...) names the camera, the rest the set.
// Series of a set count as shot together if most of their numbers are the same. Sets of
// single cameras and of neighbours are added until a calibration has as many as it asks for.
[[nodiscard]] rig_layout lay_out(const std::vector<picture_series>& series);

}  // namespace ocpan

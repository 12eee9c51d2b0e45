#pragma once

#include <string>
#include <vector>

#include "tools/report/svg.h"

namespace ocpan {

// What an axis spans, and what it says: the quantity and its unit. For pictures y spans from
// the height to 0.
struct axis {
  double first = 0;  // at the left or the bottom
  double last = 1;
  std::string label;
};

// A chart's place on its drawing, in the drawing's units.
struct plot {
  axis x, y;
  double width = 420;  // of the whole drawing
  double height = 270;
  double left = 52;  // margins
  double right = 18;
  double top = 14;
  double bottom = 44;
};

// Where a value stands on the drawing.
[[nodiscard]] double x_at(const plot& p, double value);
[[nodiscard]] double y_at(const plot& p, double value);
[[nodiscard]] Eigen::Vector2d at(const plot& p, const Eigen::Vector2d& value);

// Round values within two, at most so many, in ascending order; the two may be swapped.
[[nodiscard]] std::vector<double> round_values(double a, double b, int most);
// The largest of 1, 2 and 5 times a power of ten at or below a positive value.
[[nodiscard]] double round_down(double value);

// The chart's ground: frame, grid, the values along the axes, their labels.
[[nodiscard]] std::string ground(const plot& p);

// The height that gives both axes the same scale, the width being as it is.
[[nodiscard]] double even_height(const plot& p);

// A list of what the colours mean, in a row from a place on; each a mark and words.
struct legend_entry {
  std::string mark_attributes;  // of a short line
  std::string words;
};
[[nodiscard]] std::string legend(double x, double y, const std::vector<legend_entry>& entries);

}  // namespace ocpan

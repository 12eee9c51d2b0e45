#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <Eigen/Core>

namespace ocpan {

// The pieces of an inline SVG as strings. Lengths are in the drawing's own units; attributes
// are markup of ours such as class="grid". Only `text` and `drawing` take foreign text, and
// escape it.

using polygon = std::vector<Eigen::Vector2d>;

[[nodiscard]] std::string drawing(double width, double height, std::string_view description,
                                  std::string_view content);
[[nodiscard]] std::string line(double x1, double y1, double x2, double y2,
                               std::string_view attributes);
[[nodiscard]] std::string box(double x, double y, double width, double height,
                              std::string_view attributes);
[[nodiscard]] std::string dot(double x, double y, double radius, std::string_view attributes);
[[nodiscard]] std::string text(double x, double y, std::string_view words,
                               std::string_view attributes);
[[nodiscard]] std::string path(std::string_view steps, std::string_view attributes);

// Steps of a path: through all corners and back to the first, and through all without.
[[nodiscard]] std::string closed_steps(const polygon& corners);
[[nodiscard]] std::string open_steps(const polygon& points);

}  // namespace ocpan

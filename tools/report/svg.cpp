#include "tools/report/svg.h"

#include "tools/report/markup.h"

namespace ocpan {
namespace {

std::string attribute(std::string_view name, double value) {
  return joined(" ", name, "=\"", number(value), "\"");
}

}  // namespace

std::string drawing(double width, double height, std::string_view description,
                    std::string_view content) {
  return joined("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 ", number(width), " ",
                number(height), "\" role=\"img\" aria-label=\"", escaped(description), "\">",
                content, "</svg>\n");
}

std::string line(double x1, double y1, double x2, double y2, std::string_view attributes) {
  return joined("<line", attribute("x1", x1), attribute("y1", y1), attribute("x2", x2),
                attribute("y2", y2), " ", attributes, "/>");
}

std::string box(double x, double y, double width, double height, std::string_view attributes) {
  return joined("<rect", attribute("x", x), attribute("y", y), attribute("width", width),
                attribute("height", height), " ", attributes, "/>");
}

std::string dot(double x, double y, double radius, std::string_view attributes) {
  return joined("<circle", attribute("cx", x), attribute("cy", y), attribute("r", radius), " ",
                attributes, "/>");
}

std::string text(double x, double y, std::string_view words, std::string_view attributes) {
  return joined("<text", attribute("x", x), attribute("y", y), " ", attributes, ">", escaped(words),
                "</text>");
}

std::string path(std::string_view steps, std::string_view attributes) {
  return steps.empty() ? "" : joined("<path d=\"", steps, "\" ", attributes, "/>");
}

std::string open_steps(const polygon& points) {
  std::string steps;
  for (const Eigen::Vector2d& point : points) {
    steps += joined(steps.empty() ? "M" : "L", number(point.x(), 1), " ", number(point.y(), 1));
  }
  return steps;
}

std::string closed_steps(const polygon& corners) {
  return corners.empty() ? "" : open_steps(corners) + "Z";
}

}  // namespace ocpan

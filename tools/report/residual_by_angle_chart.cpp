#include <algorithm>

#include "tools/report/camera_charts.h"
#include "tools/report/chart_limits.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/plot.h"

namespace ocpan {
namespace {

constexpr std::size_t most_dots = 900;

// The bins' figures at the middle of each bin that has any.
struct angle_curves {
  polygon median;
  polygon far;  // 95 % lie below
  double farthest_degrees = 1;
  double highest_pixels = 0;
};

angle_curves curves_of(const evaluated_camera& quality) {
  angle_curves curves;
  curves.highest_pixels = std::max(1.6 * quality.residuals.pixels.percentile_95, 1e-9);
  for (const angle_bin& bin : quality.by_angle) {
    curves.farthest_degrees = std::max(curves.farthest_degrees, bin.to_degrees);
    const residual_spread& pixels = bin.residuals.pixels;
    if (pixels.count == 0) continue;
    curves.highest_pixels = std::max(curves.highest_pixels, 1.08 * pixels.percentile_95);
    const double middle = (bin.from_degrees + bin.to_degrees) / 2;
    curves.median.emplace_back(middle, pixels.median);
    curves.far.emplace_back(middle, pixels.percentile_95);
  }
  return curves;
}

std::string curve(const plot& p, polygon points, std::string_view pen, std::string_view dashes) {
  std::string marks;
  for (Eigen::Vector2d& point : points) {
    point = at(p, point);
    marks += dot(point.x(), point.y(), 3, joined("fill=\"#fff\" ", pen));
  }
  return path(open_steps(points), joined("fill=\"none\" ", pen, " ", dashes)) + marks;
}

std::string dots_of(const plot& p, const std::vector<corner_residual>& corners,
                    std::size_t stride) {
  std::string steps;
  for (std::size_t i = 0; i < corners.size(); i += stride) {
    const double length = corners[i].residual.norm();
    if (length > p.y.last || corners[i].axis_degrees > p.x.last) continue;
    steps += joined("M", number(x_at(p, corners[i].axis_degrees), 1), " ",
                    number(y_at(p, length), 1), "h0");
  }
  return path(steps, "stroke=\"#9aa5b1\" stroke-width=\"2\" stroke-linecap=\"round\"");
}

}  // namespace

std::string residual_by_angle_chart(const report_content& content, std::size_t camera) {
  constexpr std::string_view heading = "Residuals by the angle from the axis";
  const std::vector<corner_residual> corners = used_corners(content, camera);
  if (corners.empty()) return chart(heading, "No board of this camera takes part.", "");
  const angle_curves curves = curves_of(content.quality.cameras[camera]);
  plot p;
  p.top = 28;
  p.height = 300;
  p.x = {0, curves.farthest_degrees, "angle from the camera's axis (degrees)"};
  p.y = {0, curves.highest_pixels, "residual (pixels)"};
  const std::size_t stride = stride_for(corners.size(), most_dots);
  const std::string median_pen = joined("stroke-width=\"2\" stroke=\"", camera_colour(0), "\"");
  const std::string far_pen = joined("stroke-width=\"2\" stroke=\"", far_colour, "\"");
  constexpr std::string_view dashes = "stroke-dasharray=\"6 4\"";
  const std::string drawn =
      ground(p) + dots_of(p, corners, stride) + curve(p, curves.median, median_pen, "") +
      curve(p, curves.far, far_pen, dashes) +
      legend(p.left, p.top - 9,
             {{median_pen, "median"}, {joined(far_pen, " ", dashes), "95 % lie below"}});
  const auto above = static_cast<std::size_t>(std::count_if(
      corners.begin(), corners.end(),
      [&](const corner_residual& corner) { return corner.residual.norm() > p.y.last; }));
  std::string told =
      "Flat is good; a rise towards the rim means a lens that isn't caught well "
      "there. Dots are single corners.";
  if (above > 0) told += joined(" ", counted(above, "corner"), " above the chart.");
  return chart(heading, told + drawn_share(stride),
               drawing(p.width, p.height,
                       joined("Residuals of ", camera_name(camera),
                              " in pixels by the angle from "
                              "its axis, from 0 to ",
                              number(p.x.last, 0), " degrees"),
                       drawn));
}

}  // namespace ocpan

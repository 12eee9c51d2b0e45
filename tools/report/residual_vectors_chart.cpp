#include <algorithm>

#include "tools/report/camera_charts.h"
#include "tools/report/chart_limits.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/picture_plot.h"

namespace ocpan {
namespace {

constexpr std::size_t most_vectors = 1500;

// A bar that ends somewhere and shows how long a residual would be, its words before it.
std::string scale_bar(double end, double y, double length, std::string_view words) {
  const double begin = end - length;
  constexpr std::string_view pen = "stroke=\"#1d2733\" stroke-width=\"2\"";
  return line(begin, y - 4, end, y - 4, pen) + line(begin, y - 8, begin, y, pen) +
         line(end, y - 8, end, y, pen) + text(begin - 6, y, words, "class=\"end key\"");
}

struct vector_paths {
  std::string starts;  // a dot at each corner
  std::string near;    // lines up to the length that 95 % keep
  std::string far;     // the longer ones
};

// scale   units of the drawing for a pixel of residual
vector_paths vectors(const std::vector<corner_residual>& corners, const plot& p, double scale,
                     double far_from, std::size_t stride) {
  vector_paths paths;
  for (std::size_t i = 0; i < corners.size(); i += stride) {
    const Eigen::Vector2d from = at(p, corners[i].pixel), by = corners[i].residual * scale;
    const std::string start = joined("M", number(from.x(), 1), " ", number(from.y(), 1));
    paths.starts += start + "h0";
    (corners[i].residual.norm() > far_from ? paths.far : paths.near) +=
        joined(start, "l", number(by.x(), 1), " ", number(by.y(), 1));
  }
  return paths;
}

}  // namespace

std::string residual_vectors_chart(const report_content& content, std::size_t camera) {
  constexpr std::string_view heading = "Residuals over the picture";
  const std::vector<corner_residual> corners = used_corners(content, camera);
  if (corners.empty()) return chart(heading, "No board of this camera takes part.", "");
  const plot p = picture_plot(content.input.pictures.cameras[camera]);
  const double far = std::max(content.quality.cameras[camera].residuals.pixels.percentile_95, 1e-9);
  const double pixel = x_at(p, 1) - x_at(p, 0), width = p.width - p.left;  // of the drawing
  const double magnification = round_down(0.07 * width / (far * pixel));
  const double scale = pixel * magnification;
  const std::size_t stride = stride_for(corners.size(), most_vectors);
  const vector_paths paths = vectors(corners, p, scale, far, stride);
  const std::string far_pen =
      joined("fill=\"none\" stroke-width=\"1.6\" stroke=\"", far_colour, "\"");
  const double bar = round_down(0.2 * width / scale);
  const std::string drawn =
      ground(p) +
      path(paths.starts, "stroke=\"#8b96a3\" stroke-width=\"2\" stroke-linecap=\"round\"") +
      path(paths.near,
           joined("fill=\"none\" stroke-width=\"1.1\" stroke=\"", camera_colour(0), "\"")) +
      path(paths.far, far_pen) + legend(p.left, p.top - 9, {{far_pen, "longest 5 %"}}) +
      scale_bar(p.width - p.right, p.top - 9, bar * scale, number(bar, 4) + " pixels");
  const std::string times = number(magnification, 3) + " times magnified";
  const std::string told =
      joined("Each line starts at a corner and points, ", times,
             ", from where the calibration puts it to where it was found. Lines that lean the "
             "same way in a part of the picture mean a lens that isn't caught well there.",
             drawn_share(stride));
  return chart(heading, told,
               drawing(p.width, p.height,
                       joined("Residuals of ", camera_name(camera), " over its picture, ", times,
                              "; 95 % are shorter than ", measure(far), " pixels"),
                       drawn));
}

}  // namespace ocpan

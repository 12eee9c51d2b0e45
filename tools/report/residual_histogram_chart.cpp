#include <algorithm>

#include "tools/report/camera_charts.h"
#include "tools/report/chart_limits.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/plot.h"

namespace ocpan {
namespace {

struct length_counts {
  double step = 1;  // pixels, the width of a bar
  std::vector<std::size_t> counts;
  std::size_t beyond = 0;
};

length_counts count_lengths(const std::vector<corner_residual>& corners, double percentile_95) {
  constexpr std::size_t bars = 24;
  length_counts lengths;
  lengths.step = std::max(1.7 * percentile_95 / bars, 1e-9);
  lengths.counts.assign(bars, 0);
  for (const corner_residual& corner : corners) {
    const double bar = corner.residual.norm() / lengths.step;
    if (bar < bars) {
      ++lengths.counts[static_cast<std::size_t>(bar)];
    } else {
      ++lengths.beyond;
    }
  }
  return lengths;
}

std::string bars_of(const plot& p, const length_counts& lengths) {
  std::string content;
  for (std::size_t i = 0; i < lengths.counts.size(); ++i) {
    const double left = x_at(p, static_cast<double>(i) * lengths.step);
    const double right = x_at(p, static_cast<double>(i + 1) * lengths.step);
    const double top = y_at(p, static_cast<double>(lengths.counts[i]));
    content += box(left + 0.5, top, right - left - 1, p.height - p.bottom - top,
                   joined("fill=\"", camera_colour(0), "\" fill-opacity=\".8\""));
  }
  return content;
}

std::string upright(const plot& p, double value, std::string_view pen) {
  return line(x_at(p, value), p.top, x_at(p, value), p.height - p.bottom, pen);
}

}  // namespace

std::string residual_histogram_chart(const report_content& content, std::size_t camera) {
  constexpr std::string_view heading = "How long the residuals are";
  const std::vector<corner_residual> corners = used_corners(content, camera);
  if (corners.empty()) return chart(heading, "No board of this camera takes part.", "");
  const residual_spread& pixels = content.quality.cameras[camera].residuals.pixels;
  const length_counts lengths = count_lengths(corners, pixels.percentile_95);
  const std::size_t most = *std::max_element(lengths.counts.begin(), lengths.counts.end());
  plot p;
  p.top = 28;
  p.height = 300;
  p.x = {0, static_cast<double>(lengths.counts.size()) * lengths.step, "residual (pixels)"};
  p.y = {0, std::max(1.0, 1.08 * static_cast<double>(most)), "corners (count)"};
  const std::string mean_pen = "stroke-width=\"2\" stroke=\"#1d2733\"";
  const std::string far_pen =
      joined("stroke-width=\"2\" stroke-dasharray=\"6 4\" stroke=\"", far_colour, "\"");
  const std::string drawn = ground(p) + bars_of(p, lengths) + upright(p, pixels.mean, mean_pen) +
                            upright(p, pixels.percentile_95, far_pen) +
                            legend(p.left, p.top - 9,
                                   {{mean_pen, "mean " + measure(pixels.mean)},
                                    {far_pen, "95 % below " + measure(pixels.percentile_95)}});
  std::string told = joined(counted(pixels.count, "corner"), ", the longest residual ",
                            measure(pixels.maximum), " pixels.");
  if (lengths.beyond > 0)
    told += joined(" ", counted(lengths.beyond, "corner"), " beyond the chart.");
  return chart(heading, told,
               drawing(p.width, p.height,
                       joined("Histogram of the residuals of ", camera_name(camera), ", mean ",
                              measure(pixels.mean), " pixels"),
                       drawn));
}

}  // namespace ocpan

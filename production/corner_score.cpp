#include "production/corner_score.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "model/parameters.h"
#include "production/pixel_range.h"
#include "src/round_half_away.h"

namespace ocpan {
namespace {

constexpr double edge_reach_squared = 2.25;  // pixels squared: 1.5 to either side of an edge
constexpr double quadrant_margin = 0.1;      // pixels: nearer to an edge belongs to no quadrant

cv::Rect patch_around(const prod_corner& corner, int radius, const cv::Size& size) {
  const cv::Point first(pixel_bound(round_half_away(corner.x - radius), size.width),
                        pixel_bound(round_half_away(corner.y - radius), size.height));
  const cv::Point end(pixel_bound(round_half_away(corner.x + radius + 1), size.width),
                      pixel_bound(round_half_away(corner.y + radius + 1), size.height));
  return {first, end};
}

double squared_distance_to_line(double dx, double dy, double line_x, double line_y) {
  const double across = dy * line_x - dx * line_y;
  return across * across;
}

double gradient_score(const cv::Mat1d& magnitude, const prod_corner& corner,
                      const cv::Rect& patch) {
  cv::Mat1d filter(patch.size());
  for (int row = 0; row < patch.height; ++row) {
    for (int column = 0; column < patch.width; ++column) {
      const double dx = patch.x + column - corner.x;
      const double dy = patch.y + row - corner.y;
      const bool on_edge =
          squared_distance_to_line(dx, dy, corner.e1_x, corner.e1_y) < edge_reach_squared ||
          squared_distance_to_line(dx, dy, corner.e2_x, corner.e2_y) < edge_reach_squared;
      filter(row, column) = on_edge ? 1.0 : -1.0;
    }
  }
  const cv::Mat1d seen = magnitude(patch);
  cv::Scalar seen_mean, seen_deviation, filter_mean, filter_deviation;
  cv::meanStdDev(seen, seen_mean, seen_deviation);
  cv::meanStdDev(filter, filter_mean, filter_deviation);
  if (!(seen_deviation[0] > 0.0) || !(filter_deviation[0] > 0.0)) return 0.0;

  double sum = 0;
  for (int row = 0; row < patch.height; ++row) {
    for (int column = 0; column < patch.width; ++column) {
      sum += (seen(row, column) - seen_mean[0]) / seen_deviation[0] *
             ((filter(row, column) - filter_mean[0]) / filter_deviation[0]);
    }
  }
  return std::max(0.0, sum / (patch.area() - 1));
}

// The weighted mean grey value of each of the four quadrants between the edges.
struct quadrant {
  double weights = 0;
  double weighted = 0;
  double mean() const { return weighted / weights; }
};

double intensity_score(const cv::Mat1d& picture, const prod_corner& corner, const cv::Rect& patch,
                       int radius) {
  const double a = std::atan2(corner.e1_y, corner.e1_x);
  const double c = std::atan2(corner.e2_y, corner.e2_x);
  const double cos_a = std::cos(a), sin_a = std::sin(a);
  const double cos_c = std::cos(c), sin_c = std::sin(c);
  std::array<quadrant, 4> quadrants;
  for (int row = patch.y; row < patch.br().y; ++row) {
    for (int column = patch.x; column < patch.br().x; ++column) {
      const double dx = column - corner.x;
      const double dy = row - corner.y;
      const double s1 = dy * cos_a - dx * sin_a;
      const double s2 = dy * cos_c - dx * sin_c;
      if (std::abs(s1) < quadrant_margin || std::abs(s2) < quadrant_margin) continue;
      // Both sides negative is the first, both positive the second, then the mixed ones.
      const std::size_t k = s1 < 0 ? (s2 < 0 ? 0 : 2) : (s2 < 0 ? 3 : 1);
      const double w = std::exp(-2 * (dx * dx + dy * dy) / (radius * radius)) / std::sqrt(2 * pi);
      quadrants[k].weights += w;
      quadrants[k].weighted += w * picture(row, column);
    }
  }
  for (const quadrant& q : quadrants) {
    if (!(q.weights > 0.0)) return 0.0;
  }
  const double t1 = quadrants[0].mean(), t2 = quadrants[1].mean();
  const double t3 = quadrants[2].mean(), t4 = quadrants[3].mean();
  const double mu = (t1 + t2 + t3 + t4) / 4;
  const double first_pair_bright = std::min(std::min(t1 - mu, t2 - mu), std::min(mu - t3, mu - t4));
  const double last_pair_bright = std::min(std::min(mu - t1, mu - t2), std::min(t3 - mu, t4 - mu));
  return std::max({first_pair_bright, last_pair_bright, 0.0});
}

}  // namespace

double corner_score(const cv::Mat1d& picture, const cv::Mat1d& magnitude, const prod_corner& corner,
                    int radius) {
  const cv::Rect patch = patch_around(corner, radius, picture.size());
  if (patch.empty()) return 0.0;
  const double gradient = gradient_score(magnitude, corner, patch);
  if (gradient == 0.0) return 0.0;
  return gradient * intensity_score(picture, corner, patch, radius);
}

}  // namespace ocpan

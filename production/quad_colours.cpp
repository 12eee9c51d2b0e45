#include "production/quad_colours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include <Eigen/Core>
#include <opencv2/imgproc.hpp>

#include "platform/vector_clones.h"
#include "production/pixel_range.h"

namespace ocpan {
namespace {

constexpr double most_deviation = 32.0;      // grey values, of an even quad
constexpr double confidence = 1.96;          // deviations, 95 % of a normal distribution
constexpr double default_threshold = 128.0;  // grey values

double cross(const Eigen::Vector2d& a, const Eigen::Vector2d& b) {
  return a.x() * b.y() - a.y() * b.x();
}

// A triangle, to tell by barycentric coordinates which points lie in it or on its rim.
struct triangle {
  triangle(const Eigen::Vector2d& a, const Eigen::Vector2d& b, const Eigen::Vector2d& c)
      : corner(a), to_b(b - a), to_c(c - a), area(cross(to_b, to_c)) {}
  Eigen::Vector2d corner, to_b, to_c;
  double area;
};

// Sets the pixels of a row, from column first_x on, that lie in the triangle to 1. Nothing
// lies in a triangle without area.
OCPAN_VECTOR_CLONES void mark_inside(double* __restrict inside, const triangle& in, int first_x,
                                     int count, int y) {
  const double corner_x = in.corner.x(), b_x = in.to_b.x(), b_y = in.to_b.y();
  const double c_x = in.to_c.x(), c_y = in.to_c.y(), area = in.area;
  const double offset_y = y - in.corner.y();
  for (int k = 0; k < count; ++k) {
    const double offset_x = (first_x + k) - corner_x;
    const double u = (offset_x * c_y - offset_y * c_x) / area;
    const double v = (b_x * offset_y - b_y * offset_x) / area;
    const double before = inside[k];
    inside[k] = ((u >= 0) & (v >= 0) & (u + v <= 1)) ? 1.0 : before;
  }
}

quad_stats stats_inside(const cv::Mat1d& picture, const std::array<Eigen::Vector2d, 4>& corners,
                        std::vector<double>& inside) {
  const auto& [a, b, c, d] = corners;
  const Eigen::Vector2d low = a.cwiseMin(b).cwiseMin(c).cwiseMin(d);
  const Eigen::Vector2d high = a.cwiseMax(b).cwiseMax(c).cwiseMax(d);
  const triangle first(a, b, c);
  const triangle second(a, c, d);
  const int first_x = pixel_bound(low.x(), picture.cols);
  const int count_x = std::max(0, pixel_bound(high.x() + 1, picture.cols) - first_x);
  const int end_y = pixel_bound(high.y() + 1, picture.rows);
  double count = 0;
  double sum = 0;
  double squares = 0;
  for (int y = pixel_bound(low.y(), picture.rows); y < end_y; ++y) {
    inside.assign(static_cast<std::size_t>(count_x), 0.0);
    mark_inside(inside.data(), first, first_x, count_x, y);
    mark_inside(inside.data(), second, first_x, count_x, y);
    const double* values = picture[y] + first_x;
    for (int k = 0; k < count_x; ++k) {
      const double weight = inside[static_cast<std::size_t>(k)];
      const double value = weight * values[k];
      count += weight;
      sum += value;
      squares += value * value;
    }
  }
  const double mean = sum / count;
  return {mean, std::sqrt(squares / count - mean * mean)};
}

// The quads that share a corner with quad q, itself among them; once for each such corner.
class quad_neighbours {
 public:
  explicit quad_neighbours(const std::vector<prod_quad>& quads) : quads_(quads) {
    std::size_t corners = 0;  // up to the last that a quad has
    for (const prod_quad& quad : quads) {
      const std::int32_t last = *std::max_element(quad.begin(), quad.end());
      corners = std::max(corners, static_cast<std::size_t>(last) + 1);
    }
    at_corner_.resize(corners);
    for (std::size_t q = 0; q < quads.size(); ++q) {
      for (const std::int32_t corner : quads[q])
        at_corner_[static_cast<std::size_t>(corner)].push_back(q);
    }
  }
  std::vector<std::size_t> of(std::size_t q) const {
    std::vector<std::size_t> found;
    for (const std::int32_t corner : quads_[q]) {
      const auto& sharing = at_corner_[static_cast<std::size_t>(corner)];
      found.insert(found.end(), sharing.begin(), sharing.end());
    }
    return found;
  }

 private:
  const std::vector<prod_quad>& quads_;
  std::vector<std::vector<std::size_t>> at_corner_;  // quads, by corner
};

double threshold_among(const std::vector<std::size_t>& neighbours,
                       const std::vector<quad_stats>& stats) {
  double largest_deviation = -1.0;
  double largest_mean = 0.0;
  double smallest_mean = 256.0;
  for (const std::size_t n : neighbours) {
    if (!(stats[n].deviation < most_deviation)) continue;
    largest_deviation = std::max(largest_deviation, stats[n].deviation);
    largest_mean = std::max(largest_mean, stats[n].mean);
    smallest_mean = std::min(smallest_mean, stats[n].mean);
  }
  // So it is for one quad alone and, with these start values, for none.
  const bool alike = largest_mean <= largest_deviation * confidence + smallest_mean;
  return alike ? default_threshold : (smallest_mean + largest_mean) / 2;
}

}  // namespace

std::vector<quad_stats> quad_intensity_stats(const cv::Mat& picture,
                                             const std::vector<prod_quad>& quads,
                                             const std::vector<prod_corner>& corners) {
  cv::Mat blurred;
  cv::GaussianBlur(picture, blurred, cv::Size(5, 5), 1.0, 1.0, cv::BORDER_REFLECT_101);
  cv::Mat1d grey;
  blurred.convertTo(grey, CV_64F);
  std::vector<quad_stats> stats;
  stats.reserve(quads.size());
  std::vector<double> inside;
  for (const prod_quad& quad : quads) {
    std::array<Eigen::Vector2d, 4> positions;
    for (std::size_t k = 0; k < quad.size(); ++k) {
      const prod_corner& corner = corners[static_cast<std::size_t>(quad[k])];
      positions[k] = {corner.x, corner.y};
    }
    stats.push_back(stats_inside(grey, positions, inside));
  }
  return stats;
}

quad_lists classify_quads(const std::vector<prod_quad>& quads,
                          const std::vector<quad_stats>& stats) {
  const quad_neighbours neighbours(quads);
  quad_lists lists;
  for (std::size_t q = 0; q < quads.size(); ++q) {
    const auto [mean, deviation] = stats[q];
    if (deviation > most_deviation) continue;
    const double threshold = threshold_among(neighbours.of(q), stats);
    if (threshold < mean - confidence * deviation) {
      lists.white.push_back(quads[q]);
    } else if (threshold > mean + confidence * deviation) {
      lists.black.push_back(quads[q]);
    }
  }
  return lists;
}

}  // namespace ocpan

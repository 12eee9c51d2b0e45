#include "production/corner_refinement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include <Eigen/Core>
#include <Eigen/SVD>
#include <opencv2/imgproc.hpp>

#include "production/corner_orientation.h"
#include "production/corner_score.h"
#include "production/pixel_range.h"
#include "src/round_half_away.h"

namespace ocpan {
namespace {

constexpr double white = 255.0;
constexpr double most_parallel = 0.85;                  // cosine between two edges
constexpr double peak_ratio = 10.0;                     // strongest over second strongest edge
constexpr double across_edge = 0.25;                    // cosine below which a gradient is across
constexpr double least_gradient = 0.025;                // in units of white, after across_edge
constexpr std::array<int, 3> score_radii = {4, 8, 12};  // pixels
constexpr double least_score = 5.1000000000000005;      // grey values: 2 % of white
constexpr double least_distance_squared = 16.0;         // pixels squared

struct gradients {
  cv::Mat1d x;
  cv::Mat1d y;
  cv::Mat1d magnitude;
  cv::Mat1d angle;  // radians
};

gradients gradients_of(const cv::Mat1d& picture) {
  gradients of;
  cv::Scharr(picture, of.x, CV_64F, 1, 0, 1.0, 0.0, cv::BORDER_REFLECT_101);
  cv::Scharr(picture, of.y, CV_64F, 0, 1, 1.0, 0.0, cv::BORDER_REFLECT_101);
  cv::cartToPolar(of.x, of.y, of.magnitude, of.angle);
  return of;
}

// The directions across the two strongest edges near a candidate.
struct direction_pair {
  Eigen::Vector2d first;
  Eigen::Vector2d second;
};

std::optional<direction_pair> strongest_directions(const gradients& of, const cv::Point2d& at) {
  const auto peaks =
      orientation_peaks(smoothed(orientation_histogram(of.magnitude, of.angle, at.x, at.y)));
  if (peaks.size() < 2 || peaks[1].value * peak_ratio < peaks[0].value) return std::nullopt;
  const direction_pair pair = {peaks[0].direction, peaks[1].direction};
  if (std::abs(pair.first.dot(pair.second)) > most_parallel) return std::nullopt;
  return pair;
}

// Sums of g g^T over the patch around a candidate, in units of white squared.
struct structure_tensors {
  Eigen::Matrix2d first = Eigen::Matrix2d::Zero();   // gradients across the first direction
  Eigen::Matrix2d second = Eigen::Matrix2d::Zero();  // gradients across the second one
  Eigen::Matrix2d all = Eigen::Matrix2d::Zero();
  Eigen::Vector2d moment = Eigen::Vector2d::Zero();  // of g g^T (column, row)
};

structure_tensors tensors_around(const gradients& of, const cv::Point2d& at,
                                 const direction_pair& directions) {
  const int first_column = pixel_bound(round_half_away(at.x - 5), of.x.cols);
  const int end_column = pixel_bound(round_half_away(at.x + 6), of.x.cols);
  const int end_row = pixel_bound(round_half_away(at.y + 6), of.x.rows);
  structure_tensors sums;
  for (int row = pixel_bound(round_half_away(at.y - 5), of.x.rows); row < end_row; ++row) {
    for (int column = first_column; column < end_column; ++column) {
      const Eigen::Vector2d g(of.x(row, column), of.y(row, column));
      const Eigen::Matrix2d product = g * g.transpose() / (white * white);
      const double limit = across_edge * of.magnitude(row, column) / white;
      if (limit > least_gradient) {
        if (std::abs(g.dot(directions.first)) / white < limit) sums.first += product;
        if (std::abs(g.dot(directions.second)) / white < limit) sums.second += product;
      }
      sums.all += product;
      sums.moment += product * Eigen::Vector2d(column, row);
    }
  }
  return sums;
}

// The direction along an edge: the one in which its gradients have the least part.
Eigen::Vector2d weakest_direction(const Eigen::Matrix2d& tensor) {
  return Eigen::JacobiSVD<Eigen::Matrix2d>(tensor, Eigen::ComputeFullV).matrixV().col(1);
}

std::optional<prod_corner> refined(const gradients& of, const cv::Point2d& candidate) {
  const auto directions = strongest_directions(of, candidate);
  if (!directions) return std::nullopt;
  const structure_tensors sums = tensors_around(of, candidate, *directions);
  const Eigen::Vector2d e1 = weakest_direction(sums.first);
  const Eigen::Vector2d e2 = weakest_direction(sums.second);
  if (std::abs(e1.dot(e2)) > most_parallel) return std::nullopt;
  const Eigen::Vector2d p =
      Eigen::JacobiSVD<Eigen::Matrix2d>(sums.all, Eigen::ComputeFullU | Eigen::ComputeFullV)
          .solve(sums.moment);
  const bool inside = p.x() >= 0 && p.x() < of.x.cols && p.y() >= 0 && p.y() < of.x.rows;
  if (!inside) return std::nullopt;
  return prod_corner{p.x(), p.y(), e1.x(), e1.y(), e2.x(), e2.y()};
}

// One radius with enough of a score settles it, so the small and cheap ones go first.
bool looks_like_crossing(const cv::Mat1d& picture, const gradients& of, const prod_corner& corner) {
  return std::any_of(score_radii.begin(), score_radii.end(), [&](int radius) {
    return corner_score(picture, of.magnitude, corner, radius) >= least_score;
  });
}

bool is_near(const prod_corner& a, const prod_corner& b) {
  const double dx = a.x - b.x;
  const double dy = a.y - b.y;
  return dx * dx + dy * dy < least_distance_squared;
}

}  // namespace

std::vector<prod_corner> refine_corners(const cv::Mat& picture,
                                        const std::vector<cv::Point2d>& candidates) {
  cv::Mat1d grey;
  picture.convertTo(grey, CV_64F);
  const gradients of = gradients_of(grey);
  std::vector<prod_corner> corners;
  for (const cv::Point2d& candidate : candidates) {
    const auto corner = refined(of, candidate);
    if (!corner || !looks_like_crossing(grey, of, *corner)) continue;
    const bool repeated = std::any_of(corners.begin(), corners.end(), [&](const prod_corner& kept) {
      return is_near(kept, *corner);
    });
    if (!repeated) corners.push_back(*corner);
  }
  return corners;
}

}  // namespace ocpan

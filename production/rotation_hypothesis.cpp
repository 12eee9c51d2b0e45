#include "production/rotation_hypothesis.h"

#include <algorithm>
#include <array>
#include <optional>

#include "model/rigid_rotation.h"
#include "production/production_codes.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;

constexpr int draw_limit = 1001;     // failed draws that end a hypothesis
constexpr Eigen::Index block = 256;  // points worked on at once, on the stack

using block_row = Eigen::Array<double, 1, Eigen::Dynamic, Eigen::RowMajor, 1, block>;

// An unvisited camera next to the visited ones, and a visited neighbour of it.
struct graph_step {
  std::uint64_t camera;
  std::uint64_t base;
};

std::optional<graph_step> random_step(std::mt19937& generator, const camera_graph& graph,
                                      const std::vector<bool>& visited) {
  std::vector<std::uint64_t> frontier;  // ascending, as the graph is
  for (const auto& [camera, neighbours] : graph) {
    const auto known = [&](std::uint64_t other) { return visited[other]; };
    if (!visited[camera] && std::any_of(neighbours.begin(), neighbours.end(), known)) {
      frontier.push_back(camera);
    }
  }
  if (frontier.empty()) return std::nullopt;
  const std::uint64_t camera = frontier[random_index(generator, frontier.size())];
  std::vector<std::uint64_t> bases;
  for (const std::uint64_t other : graph.at(camera)) {
    if (visited[other]) bases.push_back(other);
  }
  return graph_step{camera, bases[random_index(generator, bases.size())]};
}

// Two positions in a list of matches. The draw has failed if they name the same match, or
// matches that share a quad on either side.
struct match_draw {
  std::size_t first;
  std::size_t second;
  bool failed;
};

// Two positions that differ, if the generator gives any in time.
match_draw draw_positions(std::mt19937& generator, std::size_t count) {
  match_draw draw{random_index(generator, count), random_index(generator, count), false};
  for (int equal = 0; draw.second == draw.first; draw.second = random_index(generator, count)) {
    if (++equal == draw_limit) {
      draw.failed = true;
      break;
    }
  }
  return draw;
}

// Two matches that differ on both sides. A failed draw is the last one made.
match_draw draw_matches(std::mt19937& generator, const std::vector<quad_match>& matches) {
  if (matches.size() < 2) return {0, 0, true};
  for (int failures = 0;;) {
    match_draw draw = draw_positions(generator, matches.size());
    if (draw.failed) return draw;
    const quad_match& a = matches[draw.first];
    const quad_match& b = matches[draw.second];
    if (a.first != b.first && a.second != b.second) return draw;
    if (++failures == draw_limit) {
      draw.failed = true;
      return draw;
    }
  }
}

void add_outer_products(Matrix3d& sum, const quad_match& match, const sphere_points& first,
                        const sphere_points& second) {
  for (std::size_t k = 0; k < 4; ++k) {
    sum += first.col(match.first[k]) * second.col(match.second[k]).transpose();
  }
}

// A rotation that carries the higher camera's points to the lower one's by two random
// matches.
struct pair_rotation {
  Matrix3d lower_from_higher;
  bool failed;
};

pair_rotation draw_rotation(std::mt19937& generator, const search_inputs& inputs,
                            const camera_pair& pair) {
  const std::vector<quad_match>& matches = inputs.quad_matches->at(pair);
  const match_draw draw = draw_matches(generator, matches);
  const sphere_points& lower = (*inputs.points)[pair.first];
  const sphere_points& higher = (*inputs.points)[pair.second];
  Matrix3d sum = Matrix3d::Zero();
  if (!matches.empty()) add_outer_products(sum, matches[draw.first], lower, higher);
  if (matches.size() > 1) add_outer_products(sum, matches[draw.second], lower, higher);
  return {closest_rotation(sum), draw.failed};
}

// Row k of a rotation times a block of points.
block_row turned_row(const Matrix3d& rotation, int k, const sphere_points& points,
                     Eigen::Index start, Eigen::Index count) {
  return rotation(k, 0) * points.row(0).segment(start, count).array() +
         rotation(k, 1) * points.row(1).segment(start, count).array() +
         rotation(k, 2) * points.row(2).segment(start, count).array();
}

double count_inliers(const Matrix3d& first_rotation, const Matrix3d& second_rotation,
                     const point_lists& points, double limit) {
  Eigen::Index inliers = 0;
  for (Eigen::Index start = 0; start < points.first.cols(); start += block) {
    const Eigen::Index count = std::min(block, points.first.cols() - start);
    block_row square = block_row::Zero(count);
    for (int k = 0; k < 3; ++k) {
      square += (turned_row(first_rotation, k, points.first, start, count) -
                 turned_row(second_rotation, k, points.second, start, count))
                    .square();
    }
    inliers += (square < limit).count();
  }
  return static_cast<double>(inliers);
}

double squared_move(const Matrix3d& rotation, const sphere_points& points, double unit) {
  double sum = 0;
  for (Eigen::Index start = 0; start < points.cols(); start += block) {
    const Eigen::Index count = std::min(block, points.cols() - start);
    block_row square = block_row::Zero(count);
    for (int k = 0; k < 3; ++k) {
      square += (turned_row(rotation, k, points, start, count) -
                 points.row(k).segment(start, count).array())
                    .square();
    }
    sum += (square / unit).sum();
  }
  return sum;
}

double all_inliers(const std::vector<Matrix3d>& rotations, const search_inputs& inputs) {
  const double limit = inputs.scale * 0.0625 * inputs.scale;
  double inliers = 0;
  for (const camera_pair& pair : *inputs.pairs) {
    inliers += count_inliers(rotations[pair.first], rotations[pair.second],
                             inputs.pair_points->at(pair), limit);
  }
  return inliers;
}

double mean_move(const std::vector<Matrix3d>& rotations, const search_inputs& inputs) {
  double sum = 0;
  Eigen::Index count = 0;
  for (std::size_t c = 0; c < rotations.size(); ++c) {
    const sphere_points& points = (*inputs.points)[c];
    sum += squared_move(rotations[c], points, inputs.scale * inputs.scale);
    count += points.cols();
  }
  return sum / static_cast<double>(count);
}

}  // namespace

std::size_t random_index(std::mt19937& generator, std::size_t count) {
  return (generator() >> 1) % count;
}

hypothesis try_hypothesis(std::mt19937& generator, const search_inputs& inputs) {
  hypothesis guess;
  guess.rotations.assign(inputs.camera_count, Matrix3d::Zero());
  guess.rotations[0].setIdentity();
  std::vector<bool> visited(inputs.camera_count, false);
  visited[0] = true;
  bool failed = false;
  for (std::uint64_t pending = inputs.camera_count - 1; pending > 0; --pending) {
    const auto step = random_step(generator, *inputs.graph, visited);
    if (!step) {
      guess.status = fixture_unusable;
      return guess;
    }
    const auto [camera, base] = *step;
    const auto [rotation, draw_failed] =
        draw_rotation(generator, inputs, {std::min(camera, base), std::max(camera, base)});
    failed |= draw_failed;
    guess.rotations[camera] =
        guess.rotations[base] * (camera < base ? Matrix3d(rotation.transpose()) : rotation);
    visited[camera] = true;
  }
  guess.inliers = failed ? 0 : all_inliers(guess.rotations, inputs);
  guess.error = mean_move(guess.rotations, inputs);
  return guess;
}

}  // namespace ocpan

#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include <Eigen/Core>

#include "production/quad_matching.h"

namespace ocpan {

// What the workers of the rotation search share. They only read it, so nobody may write
// what it points to while they run.
struct search_inputs {
  std::uint64_t camera_count = 0;
  const camera_graph* graph = nullptr;
  const std::vector<camera_pair>* pairs = nullptr;                  // that overlap
  const pair_map<corner_index_lists>* corner_indices = nullptr;     // first pass
  const std::vector<sphere_points>* points = nullptr;               // of each camera's corners
  double scale = 0;                                                 // quad_scale, mm
  const pair_map<std::vector<quad_match>>* quad_matches = nullptr;  // first pass
  const pair_map<point_lists>* pair_points = nullptr;               // first pass
};

// One guess at how all cameras are turned.
struct hypothesis {
  std::vector<Eigen::Matrix3d> rotations;  // per camera; camera 0's is the identity
  double inliers = 0;                      // first-pass corner pairs within a quarter cell
  double error = 0;                        // mean squared move of all corners, squared cells
  int status = 0;                          // fixture_unusable: a camera can't be reached
};

// A uniform integer from 0 to count - 1: 31 bits of the generator, reduced by remainder.
//
//   count   above 0
std::size_t random_index(std::mt19937& generator, std::size_t count);

// Guesses the rotations by walking the camera graph from camera 0 along random edges, each
// camera turned to its neighbour by two random quad matches of theirs (Fischler, Bolles,
// Random Sample Consensus, 1981). Matches that can't be told apart leave a hypothesis
// without inliers, and so does a list of fewer than two. With another status than 0 the other
// fields mean nothing.
hypothesis try_hypothesis(std::mt19937& generator, const search_inputs& inputs);

}  // namespace ocpan

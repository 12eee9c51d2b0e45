#pragma once

#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include <Eigen/Core>

#include "production/rotation_hypothesis.h"

namespace ocpan {

inline constexpr unsigned search_trials = 10000;  // of all workers together

// One worker's own record. It is seeded by one draw of std::rand(), which nobody seeds: in
// a fresh process the k-th record made always has the same generator.
struct t_data {
  std::mt19937 generator{static_cast<std::mt19937::result_type>(std::rand())};
  const search_inputs* inputs = nullptr;
  std::uint32_t trials = 0;
  int error = -2;  // 0 when the worker ended well; -2 for one that never ran
  std::vector<Eigen::Matrix3d> best_rotations;
  double best_inliers = 0;
  double best_error = 0;
};

// How many workers search on so many processors: all but one, at least 1, at most 8.
// Prints a line if the system told of none.
unsigned search_worker_count(unsigned processors);

// The trials of the k-th of some workers; together they are search_trials.
unsigned worker_share(unsigned worker, unsigned workers);

// Runs the trials of a record and keeps the best hypothesis: the most inliers, then the
// smallest error, which must be below 0.5. Ends at the first trial with a status and keeps
// that as the record's error. The body of a thread; always gives 0.
unsigned search_worker(t_data* data);

// Searches the rotations, one per camera, that bring most first-pass matches together.
//
//   rotations   out; identities if no trial was accepted or the search failed
//   workers     threads to run, above 0; the result depends on it
//
// Prints why it fails and gives an internal result code, fixture_unusable if a camera
// can't be reached.
[[nodiscard]] int rotation_search(std::vector<Eigen::Matrix3d>& rotations,
                                  const search_inputs& inputs, unsigned workers);

}  // namespace ocpan

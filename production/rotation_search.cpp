#include "production/rotation_search.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "platform/processors.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

constexpr double error_limit = 0.5;  // squared cells
constexpr unsigned most_workers = 8;

// More inliers, or as many and a smaller error.
bool better(double inliers, double error, double best_inliers, double best_error) {
  return inliers > best_inliers || (inliers == best_inliers && error < best_error);
}

}  // namespace

unsigned search_worker_count(unsigned processors) {
  if (processors == 0) print_line("OS reported 0 for number of concurrent tasks!");
  return processors < 2 ? 1 : std::min(processors - 1, most_workers);
}

unsigned worker_share(unsigned worker, unsigned workers) {
  const unsigned share = search_trials / workers;
  return worker + 1 < workers ? share : search_trials - worker * share;
}

unsigned search_worker(t_data* data) {
  for (std::uint32_t trial = 0; trial < data->trials; ++trial) {
    hypothesis guess = try_hypothesis(data->generator, *data->inputs);
    if (guess.status != 0) {
      data->error = guess.status;
      return 0;
    }
    if (guess.error < error_limit &&
        better(guess.inliers, guess.error, data->best_inliers, data->best_error)) {
      data->best_rotations = std::move(guess.rotations);
      data->best_inliers = guess.inliers;
      data->best_error = guess.error;
    }
  }
  data->error = 0;
  return 0;
}

int rotation_search(std::vector<Eigen::Matrix3d>& rotations, const search_inputs& inputs,
                    unsigned workers) {
  rotations.assign(inputs.camera_count, Eigen::Matrix3d::Identity());
  const std::unique_ptr<t_data[]> records(new (std::nothrow) t_data[workers]);
  if (!records) {
    print_line("t_data alloc failed");
    return code::out_of_memory;
  }
  for (unsigned k = 0; k < workers; ++k) {
    records[k].inputs = &inputs;
    records[k].trials = worker_share(k, workers);
  }
  if (!run_workers(workers, [&](std::size_t k) { search_worker(&records[k]); })) {
    print_line("t alloc failed");
    return code::out_of_memory;
  }
  const auto failed = [](const t_data& record) { return record.error != 0; };
  const t_data* const end = records.get() + workers;
  if (const t_data* record = std::find_if(records.get(), records.get() + workers, failed);
      record != end) {
    print_line("Error detected!");
    return record->error;
  }
  const t_data* best = nullptr;
  for (const t_data* record = records.get(); record != end; ++record) {
    if (better(record->best_inliers, record->best_error, best ? best->best_inliers : 0,
               best ? best->best_error : 0)) {
      best = record;
    }
  }
  if (best) rotations = best->best_rotations;
  return code::success;
}

}  // namespace ocpan

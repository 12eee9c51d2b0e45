// The solver on simulated rigs: whole calibrations from found boards, and one iteration.

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/simulated_boards.h"
#include "calibration/calibration_stages.h"
#include "calibration/rig_constraints.h"
#include "solver/stage_lists.h"
#include "solver/try_step.h"

namespace ocpan {
namespace {

// Steps 2 to 4 of a calibration.
void calibrate_boards(benchmark::State& state) {
  const simulated_boards boards(preset_of(state.range(0)), static_cast<int>(state.range(1)));
  if (!boards.problem.empty()) return state.SkipWithError(boards.problem.c_str());
  rig initial;
  for (const camera_details& camera : boards.details) initial.push_back(initial_model(camera));
  const auto constraints = rig_constraints(boards.details);
  std::ostringstream banners;
  std::streambuf* const before = std::cout.rdbuf(banners.rdbuf());
  for (auto _ : state) {
    run_report report;
    rig models;
    calibrate_from_boards(report, models, boards.sets, boards.frames, initial, constraints);
    benchmark::DoNotOptimize(models);
  }
  std::cout.rdbuf(before);
}
BENCHMARK(calibrate_boards)
    ->ArgNames({"cameras", "frames"})
    ->Args({2, 20})
    ->Args({4, 20})
    ->Args({8, 20})
    ->Args({4, 100})
    ->Unit(benchmark::kMillisecond);

// Linearising and one trial with everything free.
void one_iteration(benchmark::State& state) {
  const simulated_boards boards(preset_of(state.range(0)), static_cast<int>(state.range(1)));
  if (!boards.problem.empty()) return state.SkipWithError(boards.problem.c_str());
  const rig_groups shared = shared_board_groups(boards.sets, boards.frames, boards.truth);
  const solve_settings settings;
  const solver_problem problem =
      make_problem(shared.groups, free_for_all(boards.truth.size()), free_poses(),
                   rig_constraints(boards.details), {}, settings);
  const solver_state start = start_state(problem, boards.truth);
  for (auto _ : state) {
    column_scales scales(problem.layout);
    const linearisation at = linearise(problem, start, 3.0, scales);
    const trial_step trial = try_step(problem, start, at, scales, 0.01, 3.0, false);
    benchmark::DoNotOptimize(trial.cost);
  }
  state.counters["shots"] = static_cast<double>(problem.shots.size());
}
BENCHMARK(one_iteration)
    ->ArgNames({"cameras", "frames"})
    ->Args({2, 20})
    ->Args({2, 100})
    ->Args({4, 20})
    ->Args({4, 100})
    ->Args({8, 20})
    ->Args({8, 100})
    ->Unit(benchmark::kMillisecond);

// Linearising twenty shots that two cameras share, in a rig of two and in one of eight.
void linearise_pair_shots(benchmark::State& state) {
  const simulated_boards boards(preset_of(state.range(0)), 20);
  if (!boards.problem.empty()) return state.SkipWithError(boards.problem.c_str());
  rig_groups shared = shared_board_groups(boards.sets, boards.frames, boards.truth);
  std::vector<view_group> pair;
  for (const view_group& group : shared.groups) {
    if (pair.empty() && group.cameras.size() == 2) pair.push_back(group);
  }
  const solve_settings settings;
  const solver_problem problem =
      make_problem(pair, free_for_all(boards.truth.size()), free_poses(), {}, {}, settings);
  const solver_state start = start_state(problem, boards.truth);
  column_scales scales(problem.layout);
  for (auto _ : state) {
    benchmark::DoNotOptimize(linearise(problem, start, 3.0, scales).cost);
  }
}
BENCHMARK(linearise_pair_shots)->ArgName("cameras")->Arg(2)->Arg(8)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace ocpan

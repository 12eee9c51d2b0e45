// A whole production run from pictures to the refined calibration.

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "production/production_run.h"
#include "simulator/fixture_run.h"
#include "src/result_codes.h"
#include "tests/production/fixture_job.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

// Four pictures of 1920 by 1080.
void whole_production_run(benchmark::State& state) {
  const testing::working_folder folder;
  std::filesystem::create_directory("tmp");
  const rig_description rig = testing::fixture_rig(4, {1920, 1080, 140, 1}, 90, 30);
  const fixture_description fixture = suitable_fixture(rig);
  fixture_files files;
  const fixture_disturbance disturbance{0.8 * fixture.cell_degrees, 0.05, 0.0005, 1};
  const std::string problem = write_fixture(files, ".", rig, fixture, disturbance);
  if (!problem.empty()) return state.SkipWithError(problem.c_str());
  std::vector<const char*> pictures;
  for (const std::string& name : files.pictures) pictures.push_back(name.c_str());
  std::array<double, 3> results{};
  for (auto _ : state) {
    std::srand(1);
    if (calibrate_in_fixture(files.disturbed_calibration.c_str(), "refined.cal", 1, pictures,
                             results.data()) != code::success) {
      state.SkipWithError("the run failed");
    }
  }
  state.counters["mean_error"] = results[1];
}
BENCHMARK(whole_production_run)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->MinTime(3);

}  // namespace
}  // namespace ocpan

// Step 1 of a calibration beside the OpenCV calls that it can't avoid, on the same
// pictures, and the memory that it holds at its peak.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/chessboard_detection.h"
#include "simulator/board_series.h"
#include "simulator/presets.h"

namespace ocpan {
namespace {

// A series of one camera in a folder of its own, which is the working folder meanwhile.
class series_folder {
 public:
  explicit series_folder(int frames) : before_(std::filesystem::current_path()) {
    folder_ = std::filesystem::temp_directory_path() / "ocpan_detection_bench";
    std::filesystem::create_directories(folder_ / "tmp");
    std::filesystem::current_path(folder_);
    problem = make_preset(description_, "2-lens1");
    if (!problem.empty()) return;
    description_.sets = {{"one", {0}, frames}};
    problem = write_board_series(description_, folder_.string(), {});
    for (int frame = 0; frame < frames; ++frame) {
      files.push_back(
          (folder_ / "pictures/one" / picture_name(description_, description_.sets[0], 0, frame))
              .string());
    }
  }
  ~series_folder() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
    std::filesystem::remove_all(folder_, ignored);
  }
  series_folder(const series_folder&) = delete;
  series_folder& operator=(const series_folder&) = delete;

  std::vector<cal_frame_set> sets(std::size_t frames) const {
    set_config set;
    set.set_prefix = "one";
    set.cameras = {{1, {}, 0}};
    for (std::size_t i = 0; i < frames; ++i) set.cameras[0].files.push_back(files[i].c_str());
    set.board_width = description_.board.width;
    set.board_height = description_.board.height;
    set.board_scale = 25;
    return make_frame_sets({set}, details_of(description_));
  }

  std::string problem;
  std::vector<std::string> files;

 private:
  std::filesystem::path before_, folder_;
  rig_description description_;
};

// Runs a call without its lines.
template <typename Call>
void silently(Call&& call) {
  std::ostringstream lines;
  std::streambuf* const before = std::cout.rdbuf(lines.rdbuf());
  call();
  std::cout.rdbuf(before);
}

constexpr int frames = 12;

void step_1(benchmark::State& state) {
  const series_folder series(frames);
  if (!series.problem.empty()) return state.SkipWithError(series.problem.c_str());
  auto sets = series.sets(frames);
  for (auto _ : state) {
    silently([&] { benchmark::DoNotOptimize(detect_boards(sets)); });
  }
}
BENCHMARK(step_1)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

void bare_opencv_calls(benchmark::State& state) {
  const series_folder series(frames);
  if (!series.problem.empty()) return state.SkipWithError(series.problem.c_str());
  const cv::TermCriteria ends(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 1000, 0.001);
  for (auto _ : state) {
    for (const std::string& file : series.files) {
      cv::Mat grey, shown;
      cv::cvtColor(cv::imread(file, cv::IMREAD_COLOR), grey, cv::COLOR_BGR2GRAY);
      std::vector<cv::Point2f> corners;
      const bool found = cv::findChessboardCorners(
          grey, {9, 6}, corners, cv::CALIB_CB_ADAPTIVE_THRESH | cv::CALIB_CB_NORMALIZE_IMAGE);
      if (!found) return state.SkipWithError("a board was not found");
      cv::cornerSubPix(grey, corners, {3, 3}, {-1, -1}, ends);
      cv::cvtColor(grey, shown, cv::COLOR_GRAY2BGR);
      cv::drawChessboardCorners(shown, {9, 6}, corners, found);
      cv::imwrite("tmp/one.jpg", shown);
    }
  }
}
BENCHMARK(bare_opencv_calls)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

// The process's peak resident memory so far, in MiB; 0 where the system doesn't tell.
double peak_memory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) / 1024;
  }
  return 0;
}

// The peak after 4 pictures, and by how much 40 more raise it.
void step_1_memory(benchmark::State& state) {
  const series_folder series(44);
  if (!series.problem.empty()) return state.SkipWithError(series.problem.c_str());
  double few = 0, many = 0;
  for (auto _ : state) {
    auto first = series.sets(4);
    silently([&] { benchmark::DoNotOptimize(detect_boards(first)); });
    few = peak_memory();
    auto all = series.sets(44);
    silently([&] { benchmark::DoNotOptimize(detect_boards(all)); });
    many = peak_memory();
  }
  state.counters["peak_MiB_4"] = few;
  state.counters["growth_MiB_44"] = many - few;
}
BENCHMARK(step_1_memory)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ocpan

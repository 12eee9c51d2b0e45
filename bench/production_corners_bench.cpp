// The stages of the production run that look at one picture: 1920 by 1080 pixels with about
// a thousand corners, beside what OpenCV offers for the same picture.

#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "model/parameters.h"
#include "production/corner_detection.h"
#include "production/corner_refinement.h"
#include "production/quad_colours.h"
#include "production/quads.h"
#include "simulator/fixture.h"

namespace ocpan {
namespace {

const cv::Mat& picture() {
  static const cv::Mat rendered = [] {
    const camera_details details{1920, 1080, 140, 1};
    fixture_description fixture;
    fixture.cell_degrees = 3;
    return render_fixture({details, initial_model(details)}, fixture, 0);
  }();
  return rendered;
}

const std::vector<cv::Point2d>& candidates() {
  static const std::vector<cv::Point2d> found = [] {
    corner_scratch scratch;
    return detect_corner_candidates(picture(), scratch);
  }();
  return found;
}

const std::vector<prod_corner>& corners() {
  static const std::vector<prod_corner> found = refine_corners(picture(), candidates());
  return found;
}

cv::Mat1f float_picture() {
  cv::Mat smoothed;
  cv::GaussianBlur(picture(), smoothed, cv::Size(5, 5), 1.0);
  return cv::Mat1f(smoothed);
}

// What the responses can't do without: one Gaussian blur, one box blur per radius.
void floor_of_response(benchmark::State& state) {
  cv::Mat smoothed, mean;
  cv::Mat1f grey;
  picture();  // rendered ahead
  for (auto _ : state) {
    cv::GaussianBlur(picture(), smoothed, cv::Size(5, 5), 1.0);
    smoothed.convertTo(grey, CV_32F);
    for (const int radius : {5, 7, 9, 13}) {
      cv::blur(grey, mean, cv::Size(2 * radius + 1, 2 * radius + 1));
    }
  }
}

void corner_response_of_four_radii(benchmark::State& state) {
  corner_scratch scratch;
  const cv::Mat1f grey = float_picture();
  cv::Mat1f maximum(grey.size());
  for (auto _ : state) {
    maximum.setTo(0.0F);
    prepare_response(grey, 13, scratch);
    for (const int radius : {5, 7, 9, 13}) raise_to_response(maximum, grey, radius, scratch);
  }
}

void candidates_with_response(benchmark::State& state) {
  corner_scratch scratch;
  for (auto _ : state) benchmark::DoNotOptimize(detect_corner_candidates(picture(), scratch));
  state.counters["candidates"] = static_cast<double>(candidates().size());
}

void refinement(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(refine_corners(picture(), candidates()));
  state.counters["corners"] = static_cast<double>(corners().size());
}

void quads(benchmark::State& state) {
  std::size_t found = 0;
  for (auto _ : state) found = build_quads(corners()).size();
  state.counters["quads"] = static_cast<double>(found);
}

void colours(benchmark::State& state) {
  const auto cells = build_quads(corners());
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        classify_quads(cells, quad_intensity_stats(picture(), cells, corners())));
  }
}

void opencv_good_features_and_corner_subpix(benchmark::State& state) {
  std::vector<cv::Point2f> found;
  for (auto _ : state) {
    cv::goodFeaturesToTrack(picture(), found, 2000, 0.1, 8);
    cv::cornerSubPix(picture(), found, cv::Size(5, 5), cv::Size(-1, -1),
                     {cv::TermCriteria::EPS + cv::TermCriteria::COUNT, 30, 0.01});
  }
  state.counters["corners"] = static_cast<double>(found.size());
}

void opencv_chessboard_sb(benchmark::State& state) {
  // The largest board that the picture surely bears; the search looks at all of it.
  std::vector<cv::Point2f> found;
  bool whole = false;
  for (auto _ : state) whole = cv::findChessboardCornersSB(picture(), cv::Size(9, 7), found);
  state.counters["found"] = whole ? 1 : 0;
}

BENCHMARK(floor_of_response)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(corner_response_of_four_radii)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(candidates_with_response)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(refinement)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(quads)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(colours)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(opencv_good_features_and_corner_subpix)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();
BENCHMARK(opencv_chessboard_sb)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

}  // namespace
}  // namespace ocpan

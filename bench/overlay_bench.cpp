// The overlay and the mask transform, each beside the sum of the calls that bound it: what
// they take beyond is ours.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "tables/mask_transform.h"
#include "tables/overlay.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

struct overlay_files {
  overlay_files() {
    cv::Mat picture(1024, 1024, CV_8UC3);
    for (int y = 0; y < picture.rows; ++y) {
      for (int x = 0; x < picture.cols; ++x) {
        picture.at<cv::Vec3b>(y, x) =
            cv::Vec3b(static_cast<unsigned char>(x / 4), static_cast<unsigned char>(y / 4),
                      static_cast<unsigned char>((x * y) >> 12));
      }
    }
    cv::imwrite(input, picture);
  }
  testing::temp_folder folder;
  std::string input = folder.file("in.png");
  std::string output = folder.file("out.png");
};

constexpr int overlay_width = 3840;
constexpr int overlay_height = 512;

void overlay(benchmark::State& state) {
  const overlay_files files;
  for (auto _ : state) {
    const int result =
        create_overlay(files.input.c_str(), files.output.c_str(), overlay_width, overlay_height);
    benchmark::DoNotOptimize(result);
  }
}

void overlay_decode_maps_remap_encode(benchmark::State& state) {
  const overlay_files files;
  for (auto _ : state) {
    const cv::Mat square = cv::imread(files.input, cv::IMREAD_COLOR);
    cv::Mat map_x(overlay_height, overlay_width, CV_32FC1);
    cv::Mat map_y(overlay_height, overlay_width, CV_32FC1);
    const float centre = static_cast<float>(square.cols / 2);
    for (int j = 0; j < overlay_height; ++j) {
      const float radius = centre * static_cast<float>(overlay_height - j) / overlay_height;
      for (int i = 0; i < overlay_width; ++i) {
        const float angle = 2 * static_cast<float>(CV_PI) * static_cast<float>(i) / overlay_width;
        map_x.at<float>(j, i) = std::cos(angle) * radius + centre;
        map_y.at<float>(j, i) = std::sin(angle) * radius + centre;
      }
    }
    cv::Mat rectangle;
    cv::remap(square, rectangle, map_x, map_y, cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    cv::imwrite(files.output, rectangle);
  }
}

struct mask_files {
  mask_files() {
    cv::Mat mask = cv::Mat::zeros(2160, 3840, CV_8UC1);
    cv::ellipse(mask, {1920, 1080}, {1700, 1000}, 0, 0, 360, cv::Scalar(255), cv::FILLED);
    cv::imwrite(input, mask);
  }
  testing::temp_folder folder;
  std::string input = folder.file("in.png");
  std::string output = folder.file("out.yuv");
};

void mask_transform(benchmark::State& state) {
  const mask_files files;
  const char* inputs[] = {files.input.c_str()};
  const char* outputs[] = {files.output.c_str()};
  for (auto _ : state) {
    const int result = transform_masks(inputs, outputs);
    benchmark::DoNotOptimize(result);
  }
}

void mask_decode_distance_write(benchmark::State& state) {
  const mask_files files;
  for (auto _ : state) {
    cv::Mat picture = cv::imread(files.input, cv::IMREAD_COLOR);
    cv::cvtColor(picture, picture, cv::COLOR_BGR2GRAY);
    cv::Mat bordered;
    cv::copyMakeBorder(picture, bordered, 1, 1, 1, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    cv::Mat distance;
    cv::distanceTransform(bordered, distance, cv::DIST_L2, cv::DIST_MASK_PRECISE, CV_32F);
    const std::vector<std::uint16_t> samples(picture.total());
    std::FILE* out = std::fopen(files.output.c_str(), "wb");
    std::fwrite(samples.data(), sizeof(std::uint16_t), samples.size(), out);
    std::fclose(out);
  }
}

// Process time, for OpenCV works on several threads.
BENCHMARK(overlay)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(overlay_decode_maps_remap_encode)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(mask_transform)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(mask_decode_distance_write)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

}  // namespace
}  // namespace ocpan

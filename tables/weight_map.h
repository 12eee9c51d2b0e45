#pragma once

#include <opencv2/core.hpp>

namespace ocpan {

// How deep each pixel of a picture lies in the camera's region.
struct weight_map {
  cv::Mat distance;    // CV_32F, the mask's size: pixels to the nearest pixel outside
  double largest = 1;  // the largest distance, 1 if it is smaller
};

// Makes the weight map of a mask: its pixels above 128 are the region, and all beyond the
// picture lies outside, so a white pixel of the rim has distance 1.
//
//   mask   CV_8UC1, not empty
weight_map make_weight_map(const cv::Mat& mask);

// The weight of a pixel of the mask, 0 to 1023, where 1023 stands for the region's deepest
// point. Row and column must lie in the mask.
inline int weight_at(const weight_map& map, int row, int column) {
  return static_cast<int>(map.distance.at<float>(row, column) * 1023.0 / map.largest + 0.5);
}

}  // namespace ocpan

#include "tables/weight_map.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

namespace ocpan {

weight_map make_weight_map(const cv::Mat& mask) {
  const cv::Rect inner(1, 1, mask.cols, mask.rows);
  cv::Mat bordered = cv::Mat::zeros(mask.rows + 2, mask.cols + 2, mask.type());
  cv::threshold(mask, bordered(inner), 128.0, 255.0, cv::THRESH_BINARY);

  cv::Mat distance;
  cv::distanceTransform(bordered, distance, cv::DIST_L2, cv::DIST_MASK_PRECISE, CV_32F);
  weight_map map;
  map.distance = distance(inner);
  double largest = 0;
  cv::minMaxLoc(map.distance, nullptr, &largest);
  map.largest = std::max(largest, 1.0);
  return map;
}

}  // namespace ocpan

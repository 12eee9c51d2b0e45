#include "tables/weight_map.h"

#include <algorithm>

#include <Eigen/Core>
#include <opencv2/imgproc.hpp>

namespace ocpan {

weight_map make_weight_map(const cv::Mat& mask) {
  const cv::Rect inner(1, 1, mask.cols, mask.rows);
  cv::Mat bordered(mask.rows + 2, mask.cols + 2, mask.type());
  cv::threshold(mask, bordered(inner), 128.0, 255.0, cv::THRESH_BINARY);
  for (const int rim : {0, bordered.rows - 1}) bordered.row(rim).setTo(0);
  for (const int rim : {0, bordered.cols - 1}) bordered.col(rim).setTo(0);

  cv::Mat distance;
  cv::distanceTransform(bordered, distance, cv::DIST_L2, cv::DIST_MASK_PRECISE, CV_32F);
  weight_map map;
  map.distance = distance(inner);
  for (int row = 0; row < map.distance.rows; ++row) {
    const float* pixels = map.distance.ptr<float>(row);
    const float largest = Eigen::Map<const Eigen::ArrayXf>(pixels, map.distance.cols).maxCoeff();
    map.largest = std::max<double>(map.largest, largest);
  }
  return map;
}

}  // namespace ocpan

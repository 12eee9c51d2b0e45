#include "simulator/masks.h"

#include <cmath>
#include <vector>

#include <Eigen/Core>
#include <opencv2/imgcodecs.hpp>

#include "platform/native_path.h"
#include "simulator/pixel_rays.h"

namespace ocpan {
namespace {

Eigen::Vector3d axis_of(const rig_camera& camera) {
  return direction_from_angles(value_of(camera.model, A_th), value_of(camera.model, A_ph));
}

}  // namespace

cv::Mat render_mask(const rig_description& description, std::size_t camera,
                    double overlap_degrees) {
  // A direction's sine of the angle beyond the plane half way to another axis.
  const rig_camera& own = description.cameras[camera];
  std::vector<Eigen::Vector3d> towards_others;
  for (std::size_t other = 0; other < description.cameras.size(); ++other) {
    const Eigen::Vector3d between = axis_of(description.cameras[other]) - axis_of(own);
    if (other != camera) towards_others.push_back(between.normalized());
  }
  const double most = std::sin(overlap_degrees * pi / 180);
  cv::Mat mask = cv::Mat::zeros(own.details.height, own.details.width, CV_8UC1);
  for (int y = 0; y < mask.rows; ++y) {
    const Eigen::Matrix3Xd rays = pixel_rays(own, y);
    for (int x = 0; x < mask.cols; ++x) {
      bool inside = rays.col(x).allFinite();
      for (const Eigen::Vector3d& towards : towards_others) {
        inside = inside && rays.col(x).dot(towards) <= most;
      }
      mask.at<unsigned char>(y, x) = inside ? 255 : 0;
    }
  }
  return mask;
}

std::string write_masks(const std::string& folder, const rig_description& description,
                        double overlap_degrees) {
  for (std::size_t camera = 0; camera < description.cameras.size(); ++camera) {
    const std::string name = folder + "/mask_" + std::to_string(camera) + ".png";
    const cv::Mat mask = render_mask(description, camera, overlap_degrees);
    if (!cv::imwrite(native_path(name), mask)) return name + " can't be written";
  }
  return {};
}

}  // namespace ocpan

#include "simulator/pixel_rays.h"

#include <cmath>
#include <limits>

#include "model/projection.h"

namespace ocpan {
namespace {

// The ray of a pixel exactly on the lens's axis is not a number.
constexpr double off_axis = 1e-7;  // pixels

// A ray that comes back farther than this from its pixel isn't the one that the lens takes.
constexpr double same_pixel = 0.01;  // pixels

bool in_circle(const camera_details& details, int x, int y) {
  const double across = (x + 0.5) / details.width * 2 - 1,
               down = (y + 0.5) / details.height * 2 - 1;
  return details.lens != 2 || across * across + down * down <= 1;
}

}  // namespace

Eigen::Matrix3Xd pixel_rays(const rig_camera& camera, int row) {
  const int width = camera.details.width;
  Eigen::Matrix2Xd pixels(2, width);
  for (int x = 0; x < width; ++x) pixels.col(x) << x + off_axis, row;
  Eigen::Matrix3Xd rays;
  unproject_points(rays, pixels, camera.model);

  Eigen::ArrayXd back_x, back_y;
  project_points(back_x, back_y, rays, camera.model, Eigen::Vector3d::Zero(),
                 vector_of(camera.model, C_0));
  for (int x = 0; x < width; ++x) {
    const double error = std::hypot(back_x[x] - pixels(0, x), back_y[x] - pixels(1, x));
    if (error < same_pixel && in_circle(camera.details, x, row)) continue;
    rays.col(x).setConstant(std::numeric_limits<double>::quiet_NaN());
  }
  return rays;
}

}  // namespace ocpan

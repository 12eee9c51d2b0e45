#include "simulator/compare_rigs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include <Eigen/Geometry>

#include "model/projection.h"
#include "model/rigid_rotation.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix2Xd;
using Eigen::Matrix3d;
using Eigen::Matrix3Xd;
using Eigen::Vector3d;

constexpr int grid_points = 41;  // along each side of the picture

Matrix2Xd picture_grid(const camera_details& camera) {
  Matrix2Xd pixels(2, grid_points * grid_points);
  for (int j = 0; j < grid_points; ++j) {
    for (int i = 0; i < grid_points; ++i) {
      pixels.col(j * grid_points + i) << (camera.width - 1.0) * i / (grid_points - 1),
          (camera.height - 1.0) * j / (grid_points - 1);
    }
  }
  return pixels;
}

// Rays of the same pixels through two models, where both have one in the field of view.
struct ray_pairs {
  Matrix2Xd pixels;
  Matrix3Xd estimated, truth;
};

ray_pairs paired_rays(const model_map& estimated, const model_map& truth,
                      const camera_details& camera) {
  ray_pairs pairs{picture_grid(camera), {}, {}};
  unproject_points(pairs.estimated, pairs.pixels, estimated);
  unproject_points(pairs.truth, pairs.pixels, truth);
  const Vector3d axis = direction_from_angles(value_of(truth, A_th), value_of(truth, A_ph));
  const double least_cosine =
      camera.lens == 0 ? -1 : std::cos(std::min(pi, camera.hfov * pi / 360));
  Index kept = 0;
  for (Index i = 0; i < pairs.pixels.cols(); ++i) {
    if (!pairs.estimated.col(i).allFinite() || !pairs.truth.col(i).allFinite()) continue;
    if (pairs.truth.col(i).dot(axis) < least_cosine) continue;
    pairs.pixels.col(kept) = pairs.pixels.col(i).eval();
    pairs.estimated.col(kept) = pairs.estimated.col(i).eval();
    pairs.truth.col(kept) = pairs.truth.col(i).eval();
    ++kept;
  }
  pairs.pixels.conservativeResize(Eigen::NoChange, kept);
  pairs.estimated.conservativeResize(Eigen::NoChange, kept);
  pairs.truth.conservativeResize(Eigen::NoChange, kept);
  return pairs;
}

// The RMS distance between the pixels and where the truth sees the estimated rays; not a
// number if there are none.
double mapping_difference(const ray_pairs& pairs, const Matrix3d& turn, const model_map& truth) {
  if (pairs.pixels.cols() == 0) return std::numeric_limits<double>::quiet_NaN();
  const Matrix3Xd turned = turn * pairs.estimated;
  Eigen::ArrayXd x, y;
  project_points(x, y, turned, truth, Vector3d::Zero(), vector_of(truth, C_0));
  const Eigen::ArrayXd dx = x - pairs.pixels.row(0).transpose().array();
  const Eigen::ArrayXd dy = y - pairs.pixels.row(1).transpose().array();
  return std::sqrt((dx * dx + dy * dy).mean());
}

// Exact for small angles too, unlike the arc cosine of the trace.
double angle_degrees(const Matrix3d& rotation) {
  return Eigen::AngleAxisd(Eigen::Quaterniond(rotation)).angle() * 180 / pi;
}

}  // namespace

std::vector<camera_difference> compare_rigs(const rig& estimated, const rig& truth,
                                            const std::vector<camera_details>& details) {
  std::vector<camera_difference> differences;
  Matrix3d lay_on = Matrix3d::Identity();
  for (std::size_t c = 0; c < truth.size(); ++c) {
    const ray_pairs pairs = paired_rays(estimated[c], truth[c], details[c]);
    const Matrix3d turn = closest_rotation(pairs.truth * pairs.estimated.transpose());
    if (c == 0) lay_on = turn;
    const Vector3d place = lay_on * (vector_of(estimated[c], C_0) - vector_of(estimated[0], C_0));
    const Vector3d true_place = vector_of(truth[c], C_0) - vector_of(truth[0], C_0);
    differences.push_back({angle_degrees(turn * lay_on.transpose()), (place - true_place).norm(),
                           mapping_difference(pairs, turn, truth[c])});
  }
  return differences;
}

}  // namespace ocpan

#include "tools/adjust/uncertainty.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Geometry>
#include <Eigen/LU>
#include <Eigen/QR>

#include "model/projection.h"
#include "tools/adjust/camera_increments.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix2d;
using Eigen::Matrix2Xd;
using Eigen::Matrix3d;
using Eigen::Matrix3Xd;
using Eigen::MatrixXd;
using Eigen::Vector3d;

constexpr int lens_increments = increments_per_camera - place_increments;
constexpr int grid_points = 21;  // along each side of the picture
using lens_matrix = Eigen::Matrix<double, lens_increments, lens_increments>;

// How the pixels of directions in a camera's frame move: two rows, of x and of y, for each.
struct pixel_rows {
  MatrixXd by_lens;   // 2 N x 10
  MatrixXd by_turn;   // 2 N x 3
  MatrixXd by_point;  // 2 N x 3
};

pixel_rows rows_of(const camera_state& camera, const Matrix3Xd& rays) {
  Eigen::ArrayXd x, y;
  derivative_map dx, dy;
  project_points(x, y, dx, dy, rays, camera.lens, Vector3d::Zero(), Vector3d::Zero(), true);
  pixel_rows rows{MatrixXd(2 * rays.cols(), lens_increments), MatrixXd(2 * rays.cols(), 3),
                  MatrixXd(2 * rays.cols(), 3)};
  for (Index k = 0; k < 2 * rays.cols(); ++k) {
    const derivative_map& derivatives = k % 2 == 0 ? dx : dy;
    const Index ray = k / 2;
    const Vector3d slope(derivatives[T_0][ray], derivatives[T_1][ray], derivatives[T_2][ray]);
    rows.by_point.row(k) = slope;
    rows.by_turn.row(k) = slope.cross(Vector3d(rays.col(ray)));
    for (int i = 0; i < lens_increments; ++i) {
      rows.by_lens(k, i) =
          derivatives[key_of(static_cast<camera_increment>(place_increments + i))][ray];
    }
  }
  return rows;
}

// The directions of pixels in the camera's frame; not-a-number where the lens sees nothing,
// which for a fisheye is all beyond its field of view.
Matrix3Xd rays_of(const camera_state& camera, const camera_details& details,
                  const Matrix2Xd& pixels) {
  Matrix3Xd rays;
  unproject_points(rays, pixels, camera.lens);
  const double least_cosine =
      details.lens == 0 ? -1 : std::cos(std::min(pi, details.hfov * pi / 360));
  for (Index k = 0; k < rays.cols(); ++k) {
    if (rays(0, k) < least_cosine) rays.col(k).setConstant(std::nan(""));
  }
  return rays;
}

Matrix3Xd rays_over_picture(const camera_state& camera, const camera_details& details) {
  Matrix2Xd pixels(2, grid_points * grid_points);
  for (int k = 0; k < pixels.cols(); ++k) {
    pixels.col(k) << (details.width - 1.0) * (k % grid_points) / (grid_points - 1),
        (details.height - 1.0) * (k / grid_points) / (grid_points - 1);
  }
  const Matrix3Xd all = rays_of(camera, details, pixels);
  Matrix3Xd seen(3, all.cols());
  Index kept = 0;
  for (const auto& ray : all.colwise()) {
    if (ray.allFinite()) seen.col(kept++) = ray;
  }
  return seen.leftCols(kept);
}

// The turn, in the camera's frame, that lens increments amount to over the picture.
Eigen::Matrix<double, 3, lens_increments> turn_by_lens(const camera_state& camera,
                                                       const camera_details& details) {
  const pixel_rows rows = rows_of(camera, rays_over_picture(camera, details));
  return rows.by_turn.colPivHouseholderQr().solve(rows.by_lens);
}

Index lens_first(std::size_t camera) {
  return increment_layout::first(camera) + place_increments - increment_layout::left_out(camera);
}

// Puts what increments of one camera do into a matrix with a column for each of all
// cameras' increments.
void put(MatrixXd& all, std::size_t camera, const MatrixXd& by_turn, const MatrixXd& by_lens) {
  all.middleCols(lens_first(camera), lens_increments) += by_lens;
  if (camera > 0) all.middleCols(increment_layout::first(camera) + turn_x, 3) += by_turn;
}

double deviation(const MatrixXd& rows, const MatrixXd& covariance) {
  const double variance = (rows * covariance * rows.transpose()).trace();
  return std::sqrt(variance);
}

// A basis of the plane across a direction.
Eigen::Matrix<double, 3, 2> across(const Vector3d& direction) {
  Eigen::Matrix<double, 3, 2> basis;
  basis.col(0) = direction.unitOrthogonal();
  basis.col(1) = direction.cross(basis.col(0));
  return basis;
}

bool sees(const camera_state& camera, const Vector3d& ray) {
  Eigen::ArrayXd x, y;
  const Matrix3Xd point = ray;
  project_points(x, y, point, camera.lens, Vector3d::Zero(), Vector3d::Zero());
  Matrix3Xd back;
  unproject_points(back, Eigen::Vector2d(x[0], y[0]), camera.lens);
  return (back.col(0) - ray).norm() < 1e-4;  // false for what is no number
}

// Adds how far a camera's increments carry its view of a direction across it, with a sign.
void put_shift(MatrixXd& all, const camera_state& camera, std::size_t index,
               const Vector3d& direction, double sign) {
  const Vector3d ray = camera.rig_from_camera.transpose() * direction;
  const pixel_rows rows = rows_of(camera, ray);
  const Matrix2d by_shift = rows.by_point * camera.rig_from_camera.transpose() * across(direction);
  const Matrix2d shift_by_pixel = -sign * by_shift.inverse();
  put(all, index, shift_by_pixel * rows.by_turn, shift_by_pixel * rows.by_lens);
}

}  // namespace

Eigen::ArrayXd pixel_uncertainty(const adjusted_rig& fit, const camera_details& details,
                                 std::size_t camera, const Matrix2Xd& pixels) {
  const camera_state state = split_camera(fit.models[camera]);
  const pixel_rows rows = rows_of(state, rays_of(state, details, pixels));
  const MatrixXd turned_best = rows.by_lens - rows.by_turn * turn_by_lens(state, details);
  const lens_matrix covariance = fit.covariance.block<lens_increments, lens_increments>(
      lens_first(camera), lens_first(camera));
  Eigen::ArrayXd deviations(pixels.cols());
  for (Index k = 0; k < pixels.cols(); ++k) {
    deviations[k] = deviation(turned_best.middleRows<2>(2 * k), covariance);
  }
  return deviations;
}

Eigen::ArrayXd seam_uncertainty(const adjusted_rig& fit, std::size_t camera_a, std::size_t camera_b,
                                const Matrix3Xd& directions) {
  const camera_state a = split_camera(fit.models[camera_a]);
  const camera_state b = split_camera(fit.models[camera_b]);
  Eigen::ArrayXd deviations(directions.cols());
  for (Index k = 0; k < directions.cols(); ++k) {
    const Vector3d direction = directions.col(k);
    deviations[k] = std::nan("");
    if (!sees(a, a.rig_from_camera.transpose() * direction)) continue;
    if (!sees(b, b.rig_from_camera.transpose() * direction)) continue;
    MatrixXd shift = MatrixXd::Zero(2, fit.covariance.cols());
    put_shift(shift, a, camera_a, direction, 1);
    put_shift(shift, b, camera_b, direction, -1);
    deviations[k] = deviation(shift, fit.covariance);
  }
  return deviations;
}

double turn_uncertainty(const adjusted_rig& fit, const std::vector<camera_details>& details,
                        std::size_t camera) {
  MatrixXd turn = MatrixXd::Zero(3, fit.covariance.cols());
  for (const auto& [index, sign] : {std::pair<std::size_t, double>{camera, 1}, {0, -1}}) {
    const camera_state state = split_camera(fit.models[index]);
    const Matrix3d rig_from_camera = sign * state.rig_from_camera;
    put(turn, index, rig_from_camera, rig_from_camera * turn_by_lens(state, details[index]));
  }
  return deviation(turn, fit.covariance);
}

}  // namespace ocpan

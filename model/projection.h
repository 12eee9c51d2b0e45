#pragma once

#include <Eigen/Core>

#include "model/camera_frame.h"
#include "model/parameters.h"
#include "model/pose.h"
#include "model/resize.h"

namespace ocpan {

// The derivatives of one pixel coordinate of N points, a column of N doubles for each key:
// parameter_name 0 to 15 and LAMBDA, pose_param_name 18 to 23. There is none for L.
class derivative_map {
 public:
  void resize(Eigen::Index points) { ocpan::resize(columns_, points, column_count); }
  Eigen::Index points() const { return columns_.rows(); }
  static bool contains(int key) { return key >= C_0 && key <= T_2 && key != L; }

  // key must be one that contains() knows.
  auto operator[](int key) { return columns_.col(column_of(key)); }
  auto operator[](int key) const { return columns_.col(column_of(key)); }

 private:
  static constexpr int column_count = 23;
  static Eigen::Index column_of(int key) { return key < L ? key : key - 1; }
  Eigen::Array<double, Eigen::Dynamic, column_count> columns_;
};

// Projects board points into one camera.
//
//   x_out, y_out      N, pixels; (0, 0) is the middle of the top left pixel
//   dx_out, dy_out    derivatives of x and y, filled only with want_derivatives
//   points            3 x N, board frame, unit of board_scale
//   camera            or its model; L is read, LAMBDA is not
//   rotation          rotation vector board -> rig, radians
//   translation       board origin in the rig, unit of board_scale
//   want_derivatives  also turns off the two clamps (of the angle to the law's range, of
//                     the radius to where the distortion polynomial stays monotonic), so
//                     the same point may then land elsewhere
//
// Never fails: a point in the plane through the centre gives infinite x and y, a point on
// the distortion axis not-a-number, and NaN passes through. With L within 1e-8 of 0 chi is
// infinite or huge; models never come there but through a file. Safe on several threads.
void project_points(Eigen::ArrayXd& x_out, Eigen::ArrayXd& y_out, derivative_map& dx_out,
                    derivative_map& dy_out, const Eigen::Matrix3Xd& points,
                    const camera_frame& camera, const Eigen::Vector3d& rotation,
                    const Eigen::Vector3d& translation, bool want_derivatives);

// Values only, with the clamps.
void project_points(Eigen::ArrayXd& x_out, Eigen::ArrayXd& y_out, const Eigen::Matrix3Xd& points,
                    const camera_frame& camera, const Eigen::Vector3d& rotation,
                    const Eigen::Vector3d& translation);

// Turns pixels into rays.
//
//   rays_out   3 x N, unit columns in the rig's frame; the centre C is not added
//   pixels     2 x N, row 0 is x, row 1 is y
//   camera     or its model; L is read, LAMBDA is not
//
// Never fails: a pixel exactly on the distortion axis, or beyond what the lens law can
// reach, gives not-a-number. Safe on several threads.
void unproject_points(Eigen::Matrix3Xd& rays_out, const Eigen::Matrix2Xd& pixels,
                      const camera_frame& camera);

}  // namespace ocpan

#include "tools/adjust/view_equations.h"

#include <cmath>

#include <Eigen/Geometry>

#include "tools/adjust/robust_loss.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix3d;
using Eigen::Vector3d;

// Exact at every angle, half turns too.
Vector3d vector_of_rotation(const Matrix3d& rotation) {
  const Eigen::AngleAxisd turn{Eigen::Quaterniond(rotation)};
  return turn.angle() * turn.axis();
}

// A board before one camera.
struct camera_view {
  const Matrix3d& rig_from_camera;
  Matrix3d camera_from_board;
  Vector3d board_in_camera;  // its origin, camera's frame
  Matrix3d rig_from_board;
};

// The row of one coordinate: what moves the point comes from `slope`, the coordinate's
// derivative by the point in the camera's frame.
void fill_row(view_room& room, Index row, const derivative_map& derivatives, Index corner,
              const camera_view& view, const board_shape& shape) {
  const Vector3d slope(derivatives[T_0][corner], derivatives[T_1][corner],
                       derivatives[T_2][corner]);
  const Vector3d board_point = room.points.col(corner);
  const Vector3d in_camera = view.camera_from_board * board_point + view.board_in_camera;
  const Vector3d rig_slope = view.rig_from_camera * slope;
  const Vector3d arm = view.rig_from_board * board_point;
  auto out = room.rows.row(row);
  out.segment<3>(move_x) = -rig_slope;
  out.segment<3>(turn_x) = slope.cross(in_camera);  // the point turns the other way
  for (int i = place_increments; i < increments_per_camera; ++i) {
    out[i] = derivatives[key_of(static_cast<camera_increment>(i))][corner];
  }
  out.segment<3>(place_at) = arm.cross(rig_slope);
  out.segment<3>(place_at + 3) = rig_slope;
  const double outwards = slope.dot(view.camera_from_board.col(2));
  out[bend_at] = outwards * shape.bend_rows(corner, 0);
  out[bend_at + 1] = outwards * shape.bend_rows(corner, 1);
}

}  // namespace

board_place place_of(const ModelPose& pose) {
  return {rotation_from_vector(pose.rotation), pose.translation};
}

ModelPose pose_of(const board_place& place) {
  return {vector_of_rotation(place.rig_from_board), place.origin};
}

board_place moved(const board_place& place, const Eigen::Matrix<double, place_columns, 1>& step) {
  const Matrix3d turned = rotation_from_vector(step.head<3>()) * place.rig_from_board;
  return {Eigen::Quaterniond(turned).normalized().toRotationMatrix(),
          place.origin + step.tail<3>()};
}

void view_rows(view_room& room, const camera_state& camera, const board_place& place,
               const board_shape& shape, const board_bend& bend, const Eigen::Matrix2Xd& corners) {
  const camera_view view = {
      camera.rig_from_camera, camera.rig_from_camera.transpose() * place.rig_from_board,
      camera.rig_from_camera.transpose() * (place.origin - camera.centre), place.rig_from_board};
  bend_points(room.points, shape, bend);
  project_points(room.x, room.y, room.dx, room.dy, room.points, camera.lens,
                 vector_of_rotation(view.camera_from_board), view.board_in_camera, true);
  room.rows.resize(2 * corners.cols(), view_columns);
  for (Index k = 0; k < corners.cols(); ++k) {
    fill_row(room, 2 * k, room.dx, k, view, shape);
    fill_row(room, 2 * k + 1, room.dy, k, view, shape);
    room.rows(2 * k, residual_at) = corners(0, k) - room.x[k];
    room.rows(2 * k + 1, residual_at) = corners(1, k) - room.y[k];
  }
}

double add_up_view(view_products& products, view_room& room, double sigma) {
  double cost = 0;
  for (Index k = 0; k < room.rows.rows(); k += 2) {
    auto rows = room.rows.middleRows<2>(k);
    const robust_loss loss = loss_of(rows.col(residual_at).squaredNorm() / (sigma * sigma));
    cost += loss.value;
    if (loss.weight > 0 && rows.allFinite()) {
      rows *= std::sqrt(loss.weight) / sigma;
    } else {
      rows.setZero();
    }
  }
  products.setZero();
  products.selfadjointView<Eigen::Lower>().rankUpdate(room.rows.transpose());
  products.triangularView<Eigen::StrictlyUpper>() = products.transpose();
  return cost;
}

}  // namespace ocpan

#pragma once

#include <Eigen/Core>

#include "model/projection.h"
#include "tools/adjust/board_shape.h"
#include "tools/adjust/camera_increments.h"

namespace ocpan {

// Where a board stands, as the adjustment moves it: a step turns it about its own origin
// along the rig's axes, then moves it.
struct board_place {
  Eigen::Matrix3d rig_from_board;
  Eigen::Vector3d origin;  // rig's frame
};
inline constexpr int place_columns = 6;  // turn, then move

board_place place_of(const ModelPose& pose);
ModelPose pose_of(const board_place& place);
board_place moved(const board_place& place, const Eigen::Matrix<double, place_columns, 1>& step);

// What one view of a board gives to the equations: the products of all pairs of its columns,
// in the order of the camera's increments, the board's place, the board's two bends, and the
// residual (observed less projected) itself; weighted and in units of sigma.
inline constexpr int place_at = increments_per_camera;
inline constexpr int bend_at = place_at + place_columns;
inline constexpr int residual_at = bend_at + 2;
inline constexpr int view_columns = residual_at + 1;
using view_products = Eigen::Matrix<double, view_columns, view_columns>;

// Room for one view after the other, so that nothing is allocated in between.
struct view_room {
  Eigen::ArrayXd x, y;
  derivative_map dx, dy;
  Eigen::Matrix3Xd points;
  Eigen::Matrix<double, Eigen::Dynamic, view_columns> rows;  // x and y of each corner
};

// The residuals of a view and their derivatives, neither weighted nor scaled, into
// room.rows; the derivatives are those of the projection. Without the projection's clamps.
void view_rows(view_room& room, const camera_state& camera, const board_place& place,
               const board_shape& shape, const board_bend& bend, const Eigen::Matrix2Xd& corners);

// Adds up a view under the robust loss and gives its cost. Corners whose residual is no
// number add nothing but a high cost.
double add_up_view(view_products& products, view_room& room, double sigma);

}  // namespace ocpan

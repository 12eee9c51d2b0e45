#pragma once

#include <cstddef>

#include <Eigen/Core>

#include "model/parameters.h"

namespace ocpan {

// What can move of a camera. The turn and the axis are small angles in the camera's own
// frame, so there is no pole; pixels are those of the scales and the middle of the picture.
enum camera_increment : int {
  move_x,  // the centre, in the rig's frame and unit
  move_y,
  move_z,
  turn_x,  // of the whole camera about its A, radians
  turn_y,
  turn_z,
  scale_x,   // of H across A, pixels
  scale_y,   // of V across A and H, pixels
  skew,      // of V along H, pixels
  middle_x,  // H along A, pixels
  middle_y,  // V along A, pixels
  axis_th,   // of O against A, radians
  axis_ph,
  radial_1,  // rho_1 and rho_2
  radial_2,
  law  // LAMBDA
};
inline constexpr int increments_per_camera = 16;
inline constexpr int place_increments = 6;  // the first of them: where the camera stands and looks

using increment_vector = Eigen::Matrix<double, increments_per_camera, 1>;

// Where the increments of the cameras stand in a run of all that is free. Camera 0 has no
// place increments: where it stands and looks is the rig's frame.
struct increment_layout {
  static Eigen::Index first(std::size_t camera) {
    return camera == 0
               ? 0
               : static_cast<Eigen::Index>(camera) * increments_per_camera - place_increments;
  }
  // How many of a camera's increments are left out at their beginning.
  static int left_out(std::size_t camera) { return camera == 0 ? place_increments : 0; }
  static Eigen::Index size(std::size_t cameras) { return first(cameras); }
};

// A camera as a rigid frame with a lens in it. In the camera's frame A is (1, 0, 0), H is
// (middle, scale, 0) and V (middle, skew, scale), and O is near A, so its two angles are far
// from their pole.
struct camera_state {
  Eigen::Matrix3d rig_from_camera;
  Eigen::Vector3d centre;  // rig's frame
  model_map lens;          // all keys and LAMBDA, in the camera's frame, with centre 0
};

// The key of the lens that an increment moves.
//
//   increment   scale_x or later
parameter_name key_of(camera_increment increment);

// Splits a model. rho_0 becomes 0: it scales Q across O, which H, V and A can say as well,
// and what it said goes into them. A, H or V in one plane give not-a-number.
camera_state split_camera(const model_map& model);

// Puts a model together; the angles of its axes are within one turn.
model_map join_camera(const camera_state& camera);

// The camera after a step.
camera_state moved(const camera_state& camera, const increment_vector& step);

}  // namespace ocpan

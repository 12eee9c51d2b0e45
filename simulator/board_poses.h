#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <Eigen/Core>

#include "model/pose.h"
#include "simulator/rig_description.h"

namespace ocpan {

// The white margin around the squares, in squares.
inline constexpr double board_margin = 1.0;

// Per set, per frame: board -> rig.
using series_poses = std::vector<std::vector<ModelPose>>;

// Per set, per frame, per camera of the set: 2 x N pixels.
using series_corners = std::vector<std::vector<std::vector<Eigen::Matrix2Xd>>>;

// The inner corners in the board's frame, 3 x N: corner k at (k mod width, k div width, 0)
// squares. Seen from the side that bears the pattern x runs to the right and y down.
Eigen::Matrix3Xd board_points(const board_description& board);

// Points along the rim of the board's margin, in the board's frame, 3 x M.
Eigen::Matrix3Xd board_outline(const board_description& board);

// Chooses where the boards of all sets stand. Each board lies with its margin inside the
// pictures of all cameras of its set, is tilted and rolled within the limits and keeps its
// squares large and regular enough to be found, and the boards of a set spread over the
// pictures.
// Depends on the description alone. Gives an error text, empty if all boards found a place.
[[nodiscard]] std::string place_boards(series_poses& poses, const rig_description& description);

// Whether a board at a pose lies within the picture and the field of a camera, with its
// margin and with squares large and regular enough to be found.
bool board_is_visible(const rig_camera& camera, const board_description& board,
                      const ModelPose& pose);

// Where the corners of every board fall in every picture, faults left aside.
series_corners true_corners(const rig_description& description, const series_poses& poses);

// Adds independent normal noise to every coordinate.
//
//   sigma   pixels
void add_corner_noise(series_corners& corners, double sigma, std::uint64_t seed);

}  // namespace ocpan

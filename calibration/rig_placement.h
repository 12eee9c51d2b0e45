#pragma once

#include <vector>

#include "calibration/pair_alignment.h"
#include "model/parameters.h"

namespace ocpan {

// Places cameras that were calibrated alone into the frame of camera 0, from the boards
// that pairs of them saw.
//
//   models   each camera at the origin of its own frame
//
// Rotations are averaged over direct and third-camera paths, positions solved by linear
// least squares of least norm, so a rig whose pair graph falls apart still gets an answer:
// a camera that nothing links to camera 0 keeps its rotation.
rig place_cameras(const rig& models, const pair_points& points);

// The single steps of place_cameras, `cameras` being their number.
using rotation_table = std::map<camera_pair, weighted_rotation>;

// Each pair's rotation, from the frame of its second camera to that of its first.
rotation_table align_pairs(const pair_points& points);
// Each pair's rotation averaged with those by way of each third camera.
rotation_table refine_pairs(const rotation_table& table, std::size_t cameras);
// Each camera's rotation to the frame of camera 0, from refined pairs.
std::vector<Eigen::Matrix3d> rotations_to_first(const rotation_table& refined, std::size_t cameras);
// Each camera's position in the frame of camera 0.
//
//   table   of the pairs as align_pairs gives it
std::vector<Eigen::Vector3d> camera_positions(const pair_points& points,
                                              const rotation_table& table,
                                              const std::vector<Eigen::Matrix3d>& rotations);

}  // namespace ocpan

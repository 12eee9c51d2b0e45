#pragma once

#include <vector>

#include <Eigen/Core>

#include "model/parameters.h"
#include "production/feature_records.h"
#include "production/quad_matching.h"
#include "production/sphere_maps.h"
#include "solver/view_group.h"

namespace ocpan {

// To the solver a pair of cameras looks like a board of one single point, at (0, 0, 0),
// seen in as many poses as there are matches; the pose's translation is the feature.
using pair_measurement = view_group;

// Where a feature is taken to lie at first: on the sphere, in the direction of the middle
// of its two sphere points.
Eigen::Vector3d feature_start(const Eigen::Vector3d& first, const Eigen::Vector3d& second,
                              double radius_mm);

// The matches as the solver wants them, in the order of the pairs; a pair without a match
// gives no entry.
//
//   corners, points   per camera; the points turned by the rotation search
//   matches           second pass
std::vector<pair_measurement> build_pair_measurements(
    const std::vector<camera_pair>& pairs, const pair_map<corner_index_lists>& matches,
    const std::vector<std::vector<prod_corner>>& corners, const std::vector<sphere_points>& points,
    double radius_mm);

// How far the refinement may stray from the calibration it starts from.
struct refinement_tolerances {
  double radius_percent = 0;
  double direction_sigma = 0;  // image centre, pixels; the scale gets ten times that
  double position_sigma = 0;   // camera position, mm
};

// Refines the rig so that each feature is one point near the sphere for both its cameras.
// The lenses' distortion and law stay, and of camera 0 what anchors the rig's frame.
//
//   models_out         each model holds all 18 parameters
//   measurements_out   with the refined features
//   models             turned by the rotation search
//   radius_mm          of the fixture, a soft limit
//
// Reports nothing; without measurements the models come back as they are.
void refine_rig(rig& models_out, std::vector<pair_measurement>& measurements_out, const rig& models,
                const std::vector<pair_measurement>& measurements, double radius_mm,
                const refinement_tolerances& tolerances);

}  // namespace ocpan

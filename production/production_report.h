#pragma once

#include <cstddef>
#include <vector>

#include <Eigen/Core>

#include "model/parameters.h"
#include "production/fixture_refinement.h"
#include "production/prod_measures.h"
#include "production/sphere_maps.h"

namespace ocpan {

// Fills the reprojection and radius measures: how far the refined features, projected by
// the refined models, lie from where they were seen, and their distances from the rig's
// origin. Without a sample the means are not-a-number and the extremes infinite.
void measure_reprojection(prod_measures& measures, const rig& models,
                          const std::vector<pair_measurement>& measurements);

// Fills the feature deltas.
//
//   before, after   per camera: the sphere points of its corners by the input calibration
//                   and by the refined one
//   scale           of a cell, mm
void measure_deltas(prod_measures& measures, const std::vector<sphere_points>& before,
                    const std::vector<sphere_points>& after, double scale);

// Writes ".\tmp\Prod_QA_Measures.txt", replacing an older one; radii in metres. Says nothing
// if the file can't be written or there is no memory for it.
void write_production_report(const prod_measures& measures, std::size_t camera_count);

}  // namespace ocpan

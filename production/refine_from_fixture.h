#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "model/parameters.h"
#include "production/fixture_refinement.h"
#include "production/prod_measures.h"
#include "production/quad_matching.h"

namespace ocpan {

// Refines a rig from one picture per camera of the fixture, and writes the debug pictures.
//
//   measures         out, filled on success
//   refined_models   out
//   pictures         per camera, 8 bits, grey
//   models           the calibration to start from, mm
//   pairs            cameras that overlap, ascending
//   radius_mm        of the fixture
//
// Gives an internal result code; fixture_unusable for a camera without corners, or one that
// no match connects with camera 0.
[[nodiscard]] int refine_from_fixture(prod_measures& measures, rig& refined_models,
                                      const std::vector<cv::Mat>& pictures, const rig& models,
                                      const std::vector<camera_pair>& pairs, double radius_mm,
                                      const refinement_tolerances& tolerances);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "production/prod_measures.h"
#include "src/set_config.h"

namespace ocpan {

// One set per camera, of its one picture.
//
//   image_paths   in camera order; they must outlive the sets
std::vector<set_config> production_sets(std::span<const char* const> image_paths);

// Refines a calibration from one picture per camera, taken inside the fixture, and saves
// the result.
//
//   measures                   filled on success
//   sets                       by production_sets; as many as the calibration has cameras
//   fixture_radius             metres
//   radius_tolerance_percent   how softly features are held to the sphere
//   direction_sigma            pixels that an image centre may move
//   position_sigma             mm that a camera may move
//
// Prints why it fails and gives an internal result code; no file but debug pictures is
// written then.
[[nodiscard]] int production_run(const char* output_path, const char* calibration_path,
                                 const std::vector<set_config>& sets, float fixture_radius,
                                 float radius_tolerance_percent, float direction_sigma,
                                 float position_sigma, prod_measures* measures);

// What ocPAN_CalProd does: the run with the tolerances of the line, then the report.
//
//   results   3 numbers or null: largest and mean reprojection error in pixels, and their
//             number of samples; set also after a failure, but to no use then
//
// Gives an internal result code.
[[nodiscard]] int calibrate_in_fixture(const char* calibration_path, const char* output_path,
                                       float fixture_radius,
                                       std::span<const char* const> image_paths, double* results);

}  // namespace ocpan

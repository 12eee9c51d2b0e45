#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/fixture_pattern.h"
#include "simulator/rig_description.h"

namespace ocpan {

// How a calibration that a production run is to mend is off: each camera but the first is
// turned, moved and scaled. Cameras are turned at random, so that the two that disagree
// most do so by turn_degrees.
struct fixture_disturbance {
  double turn_degrees = 2;  // largest between two cameras
  double move_mm = 0.05;    // most along each coordinate of C
  double scale = 0.0005;    // most relative change of H and V
  std::uint64_t seed = 1;
};
rig disturbed_models(const rig& models, const fixture_disturbance& disturbance);

// How far two cameras disagree about where a corner of the fixture lies: the root of the
// mean squared angle between the two places on the sphere, degrees, of the pair of cameras
// for which it is largest. 0 if no two cameras see a corner in common.
//
//   models        the calibration to be judged
//   description   the truth: which corners a camera sees, and in which pixel
double worst_seam_degrees(const rig& models, const rig_description& description,
                          const fixture_description& fixture);

// The files of a simulated production job.
struct fixture_files {
  std::string true_calibration;
  std::string disturbed_calibration;
  std::vector<std::string> pictures;  // in camera order
};

// Renders the pictures and writes them into a folder, which must exist, with the true and a
// disturbed calibration: "fixture_1.png" and so on, "true.txt" and "disturbed.txt". Gives an
// error text, empty if all is well; the calibration file prints its own complaint too.
[[nodiscard]] std::string write_fixture(fixture_files& files, const std::string& folder,
                                        const rig_description& description,
                                        const fixture_description& fixture,
                                        const fixture_disturbance& disturbance);

}  // namespace ocpan

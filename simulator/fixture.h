#pragma once

#include <cstddef>
#include <vector>

#include <Eigen/Core>
#include <opencv2/core.hpp>

#include "simulator/fixture_pattern.h"
#include "simulator/rig_description.h"

namespace ocpan {

// The picture that a camera takes inside the fixture, 8-bit grey. Black where the lens sees
// nothing, and for lens 2 outside the ellipse that touches the picture's sides.
//
//   stream   pictures of one fixture with different streams have independent noise
cv::Mat render_fixture(const rig_camera& camera, const fixture_description& fixture,
                       std::size_t stream);

// A corner where four cells of the pattern meet, as a camera sees it.
struct fixture_corner {
  int meridian = 0;  // with line, names the corner on the sphere
  int line = 0;
  Eigen::Vector2d pixel;        // its true place
  double inside = 0;            // pixels from the picture's rim, for lens 2 from the circle's
  double crossing_degrees = 0;  // between its edges in the picture, 0 to 90
  double shortest_side = 0;     // of the four cells, pixels, about
};

// The corners that a camera sees, by line, then by meridian.
std::vector<fixture_corner> fixture_corners(const rig_camera& camera,
                                            const fixture_description& fixture);

}  // namespace ocpan

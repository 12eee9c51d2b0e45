#pragma once

#include <vector>

#include <Eigen/Core>

#include "model/parameters.h"

namespace ocpan {

// Arcs of great circles on the unit sphere.
struct arc_list {
  Eigen::Matrix3Xd starts;     // where each arc starts
  Eigen::Matrix3Xd normals;    // first direction x second direction, not normalised
  std::vector<double> angles;  // length of each arc, radians
};

// The outline of a camera's field of view, as 32 arcs from point to point.
//
//   width, height   of the picture, pixels
//   circular        the outline is the ellipse in the picture, else the picture's border.
//                   The points on the ellipse end an eighth of a turn before the first
//                   one, and the last arc spans that gap.
arc_list build_rim_arcs(const model_map& model, int width, int height, bool circular);

// The 32 arcs from the middle of the picture to the points of the outline.
arc_list build_spoke_arcs(const model_map& model, int width, int height, bool circular);

// Whether a rim arc of one camera crosses a spoke of another. The test holds the angles
// from the two starts against the arcs' lengths without regard to side, and it isn't
// symmetric in the cameras: the run takes the rim from the lower-numbered one.
bool cameras_overlap(const arc_list& rim, const arc_list& spokes);

}  // namespace ocpan

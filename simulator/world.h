#pragma once

#include <string>

#include <Eigen/Core>
#include <opencv2/core.hpp>

#include "simulator/rig_description.h"

namespace ocpan {

// A textured sphere around the rig, which every camera sees and whose true panorama is
// known. Its texture has detail of all sizes from 20 degrees down to 0.6, about 4 pixels of
// a picture that shows 190 degrees over 1280.

// The grey level of the texture in a direction from the rig's origin, 0 to 255.
double world_grey(const Eigen::Vector3d& direction);

// The direction in which a pixel of an equirectangular panorama looks, of unit length: its
// middle along -z, +x to the right, +y up. The panorama is half as high as it is wide.
Eigen::Vector3d panorama_direction(int row, int column, int width);

// The picture that a camera takes, 8-bit grey, black where the lens sees nothing.
//
//   radius   of the sphere, unit of the rig; beyond all cameras
cv::Mat render_world(const rig_camera& camera, double radius);

// The true panorama, 8-bit grey, width x width / 2.
cv::Mat render_world_panorama(int width);

// Writes the pictures of all cameras as "world_0.png" and so on, and the true panorama as
// "panorama.png" of the given width, into a folder, which must be there. Gives an error
// text, empty if all is well.
[[nodiscard]] std::string write_world(const std::string& folder, const rig_description& description,
                                      double radius, int width);

}  // namespace ocpan

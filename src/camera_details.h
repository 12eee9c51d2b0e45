#pragma once

namespace ocpan {

// The facts of a camera. The start values are those of a calibration file's running
// record; the configuration reader sets its own.
struct camera_details {
  int width = 0;   // pixels
  int height = 0;  // pixels
  float hfov = 0;  // degrees, horizontal field of view
  int lens = 0;    // 0 rectilinear, 1 and 2 fisheye
};

}  // namespace ocpan

#pragma once

#include <string>

namespace ocpan::fuzz {

// A picture of 96 by 72 pixels, as a PGM file, of a board with 3 by 3 inner corners.
//
//   turn           radians, in the picture
//   x, y           of the board's middle, pixels
//   cell           of its middle, pixels; 10 are enough to be found
//   perspective    how much larger its cells are from left to right, per pixel
std::string board_picture(double turn, double x, double y, double cell, double perspective);

}  // namespace ocpan::fuzz

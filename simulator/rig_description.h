#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "model/parameters.h"
#include "src/camera_details.h"

namespace ocpan {

// One camera of a simulated rig.
struct rig_camera {
  camera_details details;
  model_map model;  // the truth, in the rig's frame, unit of the board's square
};

// The chessboard: inner corners and the side of a square, whose unit is that of all lengths.
struct board_description {
  int width = 9;
  int height = 6;
  double square = 25;
};

// One series of frames: a board before some cameras, a picture from each per frame.
struct series_description {
  std::string name;                  // letters, digits and "_"
  std::vector<std::size_t> cameras;  // indices from 0; a file counts them from 1
  int frames = 10;
};

// How the boards are held.
struct pose_limits {
  double min_distance = 350;  // from a camera to the board's middle, unit of the square
  double max_distance = 800;
  double tilt_degrees = 40;  // most tilt against facing the camera
  double roll_degrees = 30;  // most turn in the board's plane, either way
};

// How a picture is made from a board.
struct rendering_options {
  double blur = 0.7;           // sigma of a Gaussian, pixels
  double noise = 2.0;          // sigma of a Gaussian, grey levels
  double uneven_light = 0.2;   // change of the light from the middle to the rim, 0 to 0.9
  std::string format = "png";  // or "jpg"
};

// What goes wrong with one picture. A missing file moves the later pictures of its camera
// one frame ahead: series are paired by their place in the listing.
enum class picture_fault { missing_board, truncated_file, missing_file };
struct fault_description {
  picture_fault fault = picture_fault::missing_board;
  std::size_t series = 0;
  std::size_t camera = 0;  // index in the rig
  int frame = 0;
};

// A rig with its truth, and the chessboard series to be shot with it. The same description
// always gives the same poses and pictures.
struct rig_description {
  std::vector<rig_camera> cameras;
  board_description board;
  std::vector<series_description> sets;
  pose_limits poses;
  rendering_options rendering;
  std::vector<fault_description> faults;
  std::uint64_t seed = 1;
};

// What is wrong with a description, naming the key as it stands in a file; empty if it is
// usable. Whether the boards find a place before the cameras is not known here.
std::string rig_problem(const rig_description& description);

// The cameras' facts and true models alone, by camera from 0.
std::vector<camera_details> details_of(const rig_description& description);
rig models_of(const rig_description& description);

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <Eigen/Core>

#include "model/parameters.h"
#include "model/pose.h"
#include "src/camera_details.h"
#include "tools/boards/seen_boards.h"
#include "tools/verdict.h"

namespace ocpan {

// How the lengths of some residuals spread; all 0 if there are none.
struct residual_spread {
  std::size_t count = 0;
  double mean = 0;
  double rms = 0;
  double median = 0;
  double percentile_95 = 0;
  double maximum = 0;
};

// The same residuals over the picture and as angles at the camera.
struct residual_summary {
  residual_spread pixels;
  residual_spread milliradians;
};

// A corner of a board in one picture.
struct corner_residual {
  Eigen::Vector2d pixel;     // where it was found
  Eigen::Vector2d residual;  // found less projected, pixels
  double milliradians;       // between the pixel's ray and the direction to the fitted point
  double axis_degrees;       // between the pixel's ray and the camera's axis
};

// What one camera saw of a board.
struct evaluated_view {
  std::size_t camera;                    // into the rig
  std::vector<corner_residual> corners;  // in the order of the board's points
  double rms_pixels;                     // with the pose fitted to all views of the board
  double alone_rms_pixels;               // with the pose fitted to this view alone
};

// Why a board takes no part in the numbers.
enum class board_fate {
  used,
  no_pose,        // no finite pose fits
  behind_camera,  // it would stand behind a camera that saw it
  flipped,        // a camera's corners come in another order than the others'
  torn_frame,     // each view fits alone but not with the others: the pictures of the frame
                  // don't belong together, or a camera was moved
  bad_corners     // a view doesn't fit a flat board even alone: corners found wrong
};

// One board, its pose fitted to all cameras that saw it.
struct evaluated_board {
  std::size_t set;    // of the seen board
  std::size_t frame;  // of the seen board
  board_fate fate = board_fate::used;
  std::vector<std::size_t> suspects;  // cameras without which the board would fit; may be none
  ModelPose rig_from_board;           // not a number if the fate is no_pose
  double rms_pixels;                  // over all views
  std::vector<evaluated_view> views;  // one per camera that saw it, ascending
};

// The residuals of one ring about the camera's axis.
struct angle_bin {
  double from_degrees;
  double to_degrees;
  residual_summary residuals;
};

struct evaluated_camera {
  residual_summary residuals;
  std::size_t boards = 0;           // used ones that it saw
  std::size_t left_out = 0;         // boards left out that it saw
  double alone_rms_pixels = 0;      // of its views with poses fitted to each alone: its lens
  std::vector<angle_bin> by_angle;  // of equal width, up to the farthest corner
  verdict judged = verdict::good;
};

// How two cameras stand to one another. Angles and distances don't depend on the rig's frame.
struct relative_pose {
  double degrees;   // of the turn from one camera's frame to the other's
  double distance;  // between the centres, unit of the board's square
};

// Where the boards that both cameras of a pair saw would have the second camera, lenses as
// they are, beside where the calibration has it.
struct pair_own_pose {
  relative_pose own;
  double turn_degrees;            // from the calibration's place to the own one
  double shift;                   // likewise, of the second camera's centre
  double turn_deviation_degrees;  // standard deviation of the own pose, from its residuals
  double shift_deviation;         // likewise
  double rms_pixels;              // of the pair's boards with the own pose
  Eigen::Matrix3d rotation;       // a point x of the rig lies before the own second camera
  Eigen::Vector3d translation;    // as rotation x + translation before the calibration's
};

// Two cameras that saw boards together.
struct evaluated_pair {
  std::size_t first;  // into the rig, below second
  std::size_t second;
  std::size_t boards = 0;      // used ones that both saw
  residual_summary residuals;  // of both cameras, in those boards
  relative_pose calibrated;
  std::optional<pair_own_pose> own;  // none with too few boards
  verdict judged = verdict::good;
};

// A way round some cameras over pairs that have poses of their own. With lenses and boards
// without fault it ends where it began.
struct pair_loop {
  std::vector<std::size_t> cameras;  // in order, each once; the last is linked to the first
  double turn_degrees;               // between beginning and end
  double shift;                      // likewise, of the first camera's centre
  double turn_deviation_degrees;     // what the noise of the corners lets expect
  double shift_deviation;            // likewise
  verdict judged = verdict::good;
};

// Something the numbers say, in plain words, with what to do about it.
struct evaluation_finding {
  verdict judged;
  std::string text;  // a sentence or two, without a line end; cameras are counted from 1
};

// How well a calibration explains the boards of some pictures.
struct evaluation {
  residual_summary residuals;             // of all used boards
  std::vector<evaluated_camera> cameras;  // all of the rig
  std::vector<evaluated_pair> pairs;      // those with used boards, in ascending order
  std::vector<evaluated_board> boards;    // all, in the order of the seen boards
  std::vector<pair_loop> loops;           // enough that all others are made of them
  verdict judged = verdict::good;
  std::vector<evaluation_finding> findings;  // the worst first; none if all is good
};

// Fits every board's pose to all cameras that saw it, robustly and with the calibration held
// fixed, and tells how far the corners are off. Depends on nothing but its arguments.
//
//   models    one per camera
//   cameras   the facts of the same cameras
//   boards    as the rig saw them; cameras beyond the models must not occur
[[nodiscard]] evaluation evaluate_calibration(const rig& models,
                                              const std::vector<camera_details>& cameras,
                                              const std::vector<seen_board>& boards);

// Why a board takes no part, in a few words: "its pictures don't belong together, ...".
// Empty for a used one.
[[nodiscard]] std::string why_left_out(const evaluated_board& board);

}  // namespace ocpan

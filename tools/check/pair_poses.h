#pragma once

#include <cstddef>
#include <vector>

#include "model/pose.h"
#include "tools/boards/found_boards.h"

namespace ocpan {

// How a frame of two cameras stands to what most frames of the two say of their poses.
enum class pair_fit {
  fits,
  flipped,   // it would fit with the corners of one of the two counted from another end
  apart,     // the two pictures don't show the board at one moment and place
  undecided  // nothing that most frames agree on
};

struct pair_frame {
  std::size_t set = 0;    // into rig_pictures::sets
  std::size_t frame = 0;  // in the set
  pair_fit fit = pair_fit::undecided;
  int quarter_turns = 0;         // of a flipped one, 1 to 3
  double turn_degrees = 0;       // between this frame's relative rotation and the common one
  double direction_degrees = 0;  // between where the two see the board's middle
};

// All frames in which two cameras saw the board.
struct pair_poses {
  std::size_t first = 0;  // camera, into the rig
  std::size_t second = 0;
  std::vector<pair_frame> frames;  // in the order of sets and frames
};

// Judges the frames of each two cameras without a calibration: the board's pose before each
// camera is estimated with the lens that a calibration starts from, and the relative pose
// of two cameras that most of their frames agree on is found. The limits allow for lenses
// some per cent off and for the two tilts between which a small flat board can't decide.
// All frames of a pair are undecided unless two, and half of them, agree on a pose.
[[nodiscard]] std::vector<pair_poses> judge_pairs(const rig_pictures& pictures,
                                                  const found_boards& boards);

// A shift of the second camera's series: the first camera's picture of a frame belongs to
// the second's of the frame this many further on.
struct series_shift {
  int frames = 0;   // 0 if none was found
  int fitting = 0;  // frames that don't fit without it, but fit one another with it
};

// Looks for a shift by up to three frames under which the frames of a set that don't fit
// do so.
[[nodiscard]] series_shift find_shift(const rig_pictures& pictures, const found_boards& boards,
                                      const pair_poses& pair, std::size_t set);

}  // namespace ocpan

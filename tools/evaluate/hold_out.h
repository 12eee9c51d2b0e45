#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "model/parameters.h"
#include "tools/boards/found_boards.h"
#include "tools/boards/rig_pictures.h"
#include "tools/boards/seen_boards.h"
#include "tools/evaluate/evaluation.h"
#include "tools/evaluate/frame_parts.h"

namespace ocpan {

// How far some calibrations of one rig lie apart. Each is made from all frames but a part,
// so they share most of their data; the numbers are what that lets expect of the standard
// error of one made from all frames (the delete-a-group jackknife: Shao & Wu, A General
// Theory for Jackknife Variance Estimation, 1989). What all of them have wrong alike doesn't
// show.
struct camera_scatter {
  double mapping_pixels = 0;  // RMS over the picture, after the best turn of the camera
};
struct pair_scatter {
  std::size_t first;  // into the rig, below second
  std::size_t second;
  double turn_degrees;
  double shift;  // unit of the board's square
};

struct hold_out {
  std::size_t parts = 0;
  bool refined = false;
  std::vector<rig> models;                // one calibration per part, made without it
  std::vector<evaluation> scores;         // of each on the part held out
  residual_summary residuals;             // of all parts, each held out
  std::vector<residual_summary> cameras;  // likewise, per camera
  std::size_t left_out = 0;               // boards left out of the scores
  std::vector<camera_scatter> by_camera;
  std::vector<pair_scatter> by_pair;  // of all two cameras that an evaluation has a pair of
};

// Calibrates as the library does, from the frames that aren't in a part.
rig calibrated_without(std::size_t part, const frame_numbers& part_of, const rig_pictures& pictures,
                       const found_boards& boards);

// How the frames are parted, and what is made of them.
struct hold_out_plan {
  std::size_t parts = 2;  // at least 2
  bool refine = false;    // a full adjustment after the library's calibration
};

// Calibrates once for each part of the frames without it and scores the result on it.
//
//   seen       the boards of the same pictures
//   pairs      the cameras that are told as pairs
//   progress   told how many calibrations are done
hold_out held_out(const hold_out_plan& plan, const rig_pictures& pictures,
                  const found_boards& boards, const std::vector<seen_board>& seen,
                  const std::vector<evaluated_pair>& pairs,
                  const std::function<void(std::size_t done)>& progress);

// The scatter of some calibrations of one rig alone.
std::vector<camera_scatter> scatter_of_cameras(const std::vector<rig>& models,
                                               const std::vector<camera_details>& details);
pair_scatter scatter_of_pair(const std::vector<rig>& models,
                             const std::vector<camera_details>& details, std::size_t first,
                             std::size_t second);

}  // namespace ocpan

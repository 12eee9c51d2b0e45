#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "calibration/board_groups.h"
#include "calibration/calibration_stages.h"
#include "calibration/rig_constraints.h"
#include "simulator/board_poses.h"
#include "simulator/presets.h"
#include "simulator/rig_description.h"
#include "tests/support/captured_output.h"
#include "tools/boards/seen_boards.h"

namespace ocpan::testing {

// What the cameras of a simulated rig saw of its boards, with the truth.
struct simulated_boards {
  rig_description description;
  series_poses poses;
  series_corners corners;

  std::vector<camera_details> details() const { return details_of(description); }
  rig truth() const { return models_of(description); }
};

inline simulated_boards simulate_boards(const rig_description& description, double noise,
                                        std::uint64_t seed) {
  simulated_boards simulated{description, {}, {}};
  EXPECT_EQ(place_boards(simulated.poses, description), "");
  simulated.corners = true_corners(description, simulated.poses);
  if (noise > 0) add_corner_noise(simulated.corners, noise, seed);
  return simulated;
}

inline simulated_boards simulate_preset(const std::string& preset, double noise,
                                        std::uint64_t seed) {
  rig_description description;
  EXPECT_EQ(make_preset(description, preset), "");
  return simulate_boards(description, noise, seed);
}

// The boards side by side with the frames of the series.
inline std::vector<seen_board> seen_boards_of(const simulated_boards& simulated) {
  std::vector<seen_board> boards;
  for (std::size_t s = 0; s < simulated.corners.size(); ++s) {
    for (std::size_t f = 0; f < simulated.corners[s].size(); ++f) {
      boards.push_back({s, f, simulated.description.sets[s].cameras, simulated.corners[s][f],
                        board_points(simulated.description.board)});
    }
  }
  return boards;
}

// What the library's calibration makes of the boards.
inline rig calibrated_from(const simulated_boards& simulated) {
  const std::vector<camera_details> details = simulated.details();
  std::vector<cal_frame_set> sets;
  board_frames frames;
  for (std::size_t s = 0; s < simulated.corners.size(); ++s) {
    cal_frame_set& set = sets.emplace_back();
    set.details = details;
    for (const std::size_t camera : simulated.description.sets[s].cameras) {
      set.camera_indices.push_back(camera);
    }
    set.board_width = simulated.description.board.width;
    set.board_height = simulated.description.board.height;
    set.board_scale = simulated.description.board.square;
    auto& views = frames.emplace_back();
    for (const auto& frame : simulated.corners[s]) {
      frame_views& of_frame = views.emplace_back();
      for (const Eigen::Matrix2Xd& view : frame) of_frame.push_back({true, view});
    }
  }
  rig initial, models;
  for (const camera_details& camera : details) initial.push_back(initial_model(camera));
  run_report report;
  printed_by([&] {
    calibrate_from_boards(report, models, sets, frames, initial, rig_constraints(details));
  });
  return models;
}

}  // namespace ocpan::testing

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "calibration/board_groups.h"
#include "simulator/board_poses.h"
#include "simulator/presets.h"

namespace ocpan {

// A preset's boards with a number of frames in each set and 0.045 pixels of noise.
struct simulated_boards {
  //   first_camera_alone   nothing but one set of camera 0
  simulated_boards(const std::string& preset, int frames_per_set, bool first_camera_alone = false) {
    rig_description description;
    problem = make_preset(description, preset);
    if (first_camera_alone) {
      description.cameras.resize(1);
      description.sets = {{"alone", {0}, frames_per_set}};
    }
    for (series_description& set : description.sets) set.frames = frames_per_set;
    series_poses poses;
    if (problem.empty()) problem = place_boards(poses, description);
    if (!problem.empty()) return;
    series_corners corners = true_corners(description, poses);
    add_corner_noise(corners, 0.045, 1);
    details = details_of(description);
    truth = models_of(description);
    for (std::size_t s = 0; s < corners.size(); ++s) {
      cal_frame_set set;
      set.camera_indices.assign(description.sets[s].cameras.begin(),
                                description.sets[s].cameras.end());
      set.board_width = description.board.width;
      set.board_height = description.board.height;
      set.board_scale = description.board.square;
      set.details = details;
      sets.push_back(set);
      frames.emplace_back();
      for (const auto& views : corners[s]) {
        frames.back().emplace_back();
        for (const Eigen::Matrix2Xd& view : views) frames.back().back().push_back({true, view});
      }
    }
  }
  std::string problem;
  std::vector<camera_details> details;
  rig truth;
  std::vector<cal_frame_set> sets;
  board_frames frames;
};

inline const char* preset_of(std::int64_t cameras) {
  return cameras == 2 ? "2-lens1" : cameras == 4 ? "4-lens1" : "8-lens1";
}

}  // namespace ocpan

#pragma once

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "simulator/board_poses.h"
#include "simulator/presets.h"
#include "tools/boards/found_boards.h"

namespace ocpan::testing {

// The pictures of a simulated rig and the boards in them, as if rendered and found.
struct simulated_boards {
  rig_pictures pictures;
  found_boards boards;

  // The index of a set in which these two cameras are, from 0; the first of several.
  std::size_t set_of(std::size_t a, std::size_t b) const {
    for (std::size_t set = 0; set < pictures.sets.size(); ++set) {
      const auto& cameras = pictures.sets[set].camera_indices;
      if (cameras.size() == 2 && cameras[0] == a && cameras[1] == b) return set;
    }
    ADD_FAILURE() << "no set of " << a << " and " << b;
    return 0;
  }
};

inline cal_frame_set frame_set_of(const rig_description& rig, const series_description& series,
                                  string_pool& pool) {
  cal_frame_set set;
  set.details = details_of(rig);
  set.name = series.name;
  set.board_width = rig.board.width;
  set.board_height = rig.board.height;
  set.board_scale = rig.board.square;
  for (const std::size_t camera : series.cameras) {
    set.camera_indices.push_back(camera);
    set_camera& files = set.set_cameras.emplace_back();
    files.id = static_cast<int>(camera) + 1;
    for (int frame = 0; frame < series.frames; ++frame) {
      pool.push_back("pics\\" + series.name + "\\cam" + std::to_string(camera + 1) + "_" +
                     std::to_string(frame) + ".png");
      files.files.push_back(pool.back().c_str());
    }
  }
  return set;
}

inline simulated_boards boards_of(const rig_description& rig, double noise) {
  simulated_boards made;
  series_poses poses;
  EXPECT_EQ(place_boards(poses, rig), "");
  series_corners corners = true_corners(rig, poses);
  add_corner_noise(corners, noise, rig.seed);
  made.pictures.cameras = details_of(rig);
  for (std::size_t set = 0; set < rig.sets.size(); ++set) {
    made.pictures.sets.push_back(frame_set_of(rig, rig.sets[set], made.pictures.pool));
    auto& frames = made.boards.emplace_back();
    for (const auto& frame : corners[set]) {
      auto& findings = frames.emplace_back();
      for (const Eigen::Matrix2Xd& seen : frame) {
        findings.push_back({picture_state::found, 0, 0, false, seen});
      }
    }
  }
  return made;
}

inline rig_description preset_of(const std::string& name) {
  rig_description rig;
  EXPECT_EQ(make_preset(rig, name), "");
  return rig;
}

// The corners counted from the other end of the board.
inline void flip(picture_finding& finding) {
  finding.corners = finding.corners.rowwise().reverse().eval();
}

}  // namespace ocpan::testing

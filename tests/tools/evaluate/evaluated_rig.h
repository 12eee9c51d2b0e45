#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulator/board_poses.h"
#include "simulator/board_series.h"
#include "simulator/presets.h"
#include "simulator/rig_description.h"
#include "tools/boards/seen_boards.h"

namespace ocpan::testing {

// A preset's rig with the corners that its cameras see.
struct evaluated_rig {
  rig_description description;
  series_poses poses;
  series_corners corners;

  rig truth() const { return models_of(description); }
  std::vector<camera_details> details() const { return details_of(description); }
};

// The rig of a preset with noisy corners.
//
//   frames   of each set; 0 for the preset's own number
//   noise    deviation of each coordinate, pixels
inline evaluated_rig make_evaluated_rig(const std::string& preset, int frames, double noise,
                                        std::uint64_t seed = 1) {
  evaluated_rig made;
  EXPECT_EQ(make_preset(made.description, preset), "");
  for (series_description& set : made.description.sets) {
    if (frames > 0) set.frames = frames;
  }
  EXPECT_EQ(place_boards(made.poses, made.description), "");
  made.corners = true_corners(made.description, made.poses);
  if (noise > 0) add_corner_noise(made.corners, noise, seed);
  return made;
}

// The boards as the tool takes them from pictures.
inline std::vector<seen_board> boards_of(const evaluated_rig& from) {
  std::vector<seen_board> boards;
  for (std::size_t s = 0; s < from.corners.size(); ++s) {
    for (std::size_t f = 0; f < from.corners[s].size(); ++f) {
      boards.push_back({s, f, from.description.sets[s].cameras, from.corners[s][f],
                        board_points(from.description.board)});
    }
  }
  return boards;
}

// The pictures that the corners would be found in, by name only, and what is found there.
inline rig_pictures pictures_of(const evaluated_rig& from) {
  rig_pictures pictures;
  pictures.cameras = from.details();
  std::vector<set_config> sets;
  for (const series_description& series : from.description.sets) {
    set_config set;
    set.set_prefix = pictures.pool.emplace_back(series.name).c_str();
    set.board_width = from.description.board.width;
    set.board_height = from.description.board.height;
    set.board_scale = static_cast<float>(from.description.board.square);
    for (const std::size_t camera : series.cameras) {
      set_camera& seen_by = set.cameras.emplace_back();
      seen_by.id = static_cast<int>(camera) + 1;
      for (int frame = 0; frame < series.frames; ++frame) {
        seen_by.files.push_back(
            pictures.pool
                .emplace_back(series.name + "/" +
                              picture_name(from.description, series, camera, frame))
                .c_str());
      }
    }
    sets.push_back(set);
  }
  pictures.sets = make_frame_sets(sets, pictures.cameras);
  return pictures;
}

inline found_boards found_of(const evaluated_rig& from) {
  found_boards found;
  for (const auto& frames : from.corners) {
    auto& set = found.emplace_back();
    for (const auto& views : frames) {
      auto& findings = set.emplace_back();
      for (const Eigen::Matrix2Xd& corners : views) {
        picture_finding finding;
        finding.state = picture_state::found;
        finding.corners = corners;
        findings.push_back(finding);
      }
    }
  }
  return found;
}

}  // namespace ocpan::testing

#include <algorithm>
#include <random>
#include <set>
#include <utility>

#include <gtest/gtest.h>

#include "tests/tools/check/simulated_boards.h"
#include "tools/check/pair_poses.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::flip;
using testing::preset_of;
using testing::simulated_boards;

using frame_names = std::set<std::pair<std::size_t, std::size_t>>;  // set and frame

frame_names misfits(const simulated_boards& rig, pair_fit fit) {
  frame_names frames;
  for (const pair_poses& pair : judge_pairs(rig.pictures, rig.boards)) {
    for (const pair_frame& frame : pair.frames) {
      if (frame.fit == fit) frames.insert({frame.set, frame.frame});
    }
  }
  return frames;
}

TEST(PairPosesOfAllPresets, HaveNeitherFalseAlarmsNorMisses) {
  int sound = 0, swapped = 0;
  for (const std::string& name : preset_names()) {
    simulated_boards rig = boards_of(preset_of(name), 0.1);
    for (const pair_fit fit : {pair_fit::flipped, pair_fit::apart, pair_fit::undecided}) {
      EXPECT_EQ(misfits(rig, fit), frame_names()) << name;
    }
    ++sound;
    for (std::size_t set = 0; set < rig.boards.size(); ++set) {
      if (rig.pictures.sets[set].camera_indices.size() < 2) continue;
      auto& frames = rig.boards[set];
      std::swap(frames[1][1], frames[4][1]);
      EXPECT_EQ(misfits(rig, pair_fit::apart), (frame_names{{set, 1}, {set, 4}})) << name;
      std::swap(frames[1][1], frames[4][1]);
      ++swapped;
    }
  }
  EXPECT_GE(sound, 24);
  EXPECT_GE(swapped, 90);
}

TEST(PairPosesOfAllPresets, FindEveryFlipOfAnEvenBoard) {
  std::mt19937 random(7);
  std::size_t flips = 0;
  for (const std::string& name : preset_names()) {
    rig_description description = preset_of(name);
    description.board.width = 8;
    simulated_boards rig = boards_of(description, 0.1);
    frame_names flipped;
    for (std::size_t set = 0; set < rig.boards.size(); ++set) {
      if (rig.pictures.sets[set].camera_indices.size() < 2) continue;
      for (std::size_t frame = 0; frame < rig.boards[set].size(); ++frame) {
        if (random() % 3 != 0) continue;
        flip(rig.boards[set][frame][random() % 2]);
        flipped.insert({set, frame});
      }
    }
    EXPECT_EQ(misfits(rig, pair_fit::flipped), flipped) << name;
    EXPECT_EQ(misfits(rig, pair_fit::apart), frame_names()) << name;
    flips += flipped.size();
  }
  EXPECT_GT(flips, 200u);
}

}  // namespace
}  // namespace ocpan

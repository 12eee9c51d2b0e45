#include "tools/check/pair_poses.h"

#include <utility>

#include <gtest/gtest.h>

#include "tests/tools/check/simulated_boards.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::flip;
using testing::preset_of;
using testing::simulated_boards;

constexpr double noise = 0.1;  // pixels

// The frames of a pair of cameras that don't fit, of one set.
std::vector<std::size_t> frames_with(const std::vector<pair_poses>& pairs, std::size_t set,
                                     pair_fit fit) {
  std::vector<std::size_t> frames;
  for (const pair_poses& pair : pairs) {
    for (const pair_frame& frame : pair.frames) {
      if (frame.set == set && frame.fit == fit) frames.push_back(frame.frame);
    }
  }
  return frames;
}

std::size_t misfits(const std::vector<pair_poses>& pairs) {
  std::size_t count = 0;
  for (const pair_poses& pair : pairs) {
    for (const pair_frame& frame : pair.frames) count += frame.fit != pair_fit::fits ? 1 : 0;
  }
  return count;
}

TEST(PairPoses, FindNoFaultInASoundRig) {
  for (const char* name : {"2-lens0", "4-lens1", "4-lens2-unlike"}) {
    const simulated_boards rig = boards_of(preset_of(name), noise);
    const auto pairs = judge_pairs(rig.pictures, rig.boards);
    EXPECT_GE(pairs.size(), 1u);
    EXPECT_EQ(misfits(pairs), 0u) << name;
  }
}

TEST(PairPoses, BearAFieldOfViewTenPercentOff) {
  simulated_boards rig = boards_of(preset_of("2-lens1"), noise);
  for (camera_details& camera : rig.pictures.cameras) camera.hfov *= 1.1f;
  EXPECT_EQ(misfits(judge_pairs(rig.pictures, rig.boards)), 0u);
}

TEST(PairPoses, FindTheFlippedBoards) {
  rig_description description = preset_of("2-lens0");
  description.board.width = 8;
  simulated_boards rig = boards_of(description, noise);
  const std::size_t set = rig.set_of(0, 1);
  flip(rig.boards[set][2][0]);
  flip(rig.boards[set][5][1]);
  const auto pairs = judge_pairs(rig.pictures, rig.boards);
  EXPECT_EQ(frames_with(pairs, set, pair_fit::flipped), (std::vector<std::size_t>{2, 5}));
  EXPECT_EQ(misfits(pairs), 2u);
  EXPECT_EQ(pairs.at(0).frames.at(2).quarter_turns, 2);
}

TEST(PairPoses, FindBoardsThatAllFlip) {
  rig_description description = preset_of("2-lens0");
  description.board.width = 8;
  simulated_boards rig = boards_of(description, noise);
  const std::size_t set = rig.set_of(0, 1);
  for (auto& frame : rig.boards[set]) flip(frame[1]);
  EXPECT_EQ(frames_with(judge_pairs(rig.pictures, rig.boards), set, pair_fit::flipped).size(),
            rig.boards[set].size());
}

TEST(PairPoses, FindTwoPicturesThatChangedPlaces) {
  simulated_boards rig = boards_of(preset_of("4-lens1"), noise);
  const std::size_t set = rig.set_of(1, 2);
  std::swap(rig.boards[set][1][1], rig.boards[set][6][1]);
  const auto pairs = judge_pairs(rig.pictures, rig.boards);
  EXPECT_EQ(frames_with(pairs, set, pair_fit::apart), (std::vector<std::size_t>{1, 6}));
  EXPECT_EQ(misfits(pairs), 2u);
}

TEST(PairPoses, FindASeriesThatIsShuffledAsAWhole) {
  simulated_boards rig = boards_of(preset_of("4-lens0"), noise);
  const std::size_t set = rig.set_of(0, 1);
  auto& frames = rig.boards[set];
  for (std::size_t frame = 0; frame + 1 < frames.size(); ++frame) {
    std::swap(frames[frame][1], frames[frame + 1][1]);
  }
  const auto pairs = judge_pairs(rig.pictures, rig.boards);
  EXPECT_EQ(frames_with(pairs, set, pair_fit::undecided).size(), frames.size());
  EXPECT_EQ(misfits(pairs), frames.size());
}

TEST(PairPoses, TellByHowMuchASeriesIsShifted) {
  // Without its picture 3 the second camera's series stands one frame ahead from there on.
  simulated_boards rig = boards_of(preset_of("2-lens0"), noise);
  const std::size_t set = rig.set_of(0, 1);
  auto& frames = rig.boards[set];
  for (std::size_t frame = 3; frame + 1 < frames.size(); ++frame) {
    frames[frame][1] = frames[frame + 1][1];
  }
  frames.pop_back();
  const auto pairs = judge_pairs(rig.pictures, rig.boards);
  const series_shift shift = find_shift(rig.pictures, rig.boards, pairs.at(0), set);
  EXPECT_EQ(shift.frames, -1);
  EXPECT_GE(shift.fitting, 5);
}

}  // namespace
}  // namespace ocpan

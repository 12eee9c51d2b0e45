#include "tools/check/useless_views.h"

#include <gtest/gtest.h>

#include "tests/tools/check/simulated_boards.h"
#include "tools/check/rig_check.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::preset_of;
using testing::simulated_boards;

// Puts what remains of a board's breadth into a picture: 0 for all corners on one line.
void flatten(picture_finding& finding, double breadth) {
  const double middle = finding.corners.row(1).mean();
  finding.corners.row(1) = (finding.corners.row(1).array() - middle) * breadth + middle;
}

rig_check checked(const simulated_boards& rig) {
  rig_check check;
  check_pictures(check, rig.pictures, rig.boards);
  return check;
}

TEST(UselessViews, SoundSeriesHasNone) {
  for (const char* preset : {"2-lens0", "3-lens2", "4-lens1-off-axis"}) {
    const simulated_boards rig = boards_of(preset_of(preset), 0.1);
    EXPECT_TRUE(useless_view_remarks(rig.pictures, rig.boards).empty()) << preset;
  }
}

TEST(UselessViews, BoardsOnALineAreDoubtful) {
  for (const double breadth : {0.0, 0.05}) {
    simulated_boards rig = boards_of(preset_of("2-lens0"), 0);
    for (auto& frame : rig.boards[0]) flatten(frame[0], breadth);
    EXPECT_EQ(verdict_of(checked(rig).findings), verdict::doubtful);
    const auto found = useless_view_remarks(rig.pictures, rig.boards);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].weight, verdict::doubtful);
    EXPECT_EQ(found[0].where, "set cam1, camera 1");
    EXPECT_EQ(found[0].what, "in 10 of 10 pictures the board's corners lie nearly on one line");
  }
}

TEST(UselessViews, SingleBoardSeenEdgeOnIsOnlyAHint) {
  simulated_boards rig = boards_of(preset_of("2-lens0"), 0);
  flatten(rig.boards[0][4][0], 0.02);
  const auto found = useless_view_remarks(rig.pictures, rig.boards);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].weight, verdict::good);
}

TEST(UselessViews, SamePicturesOfTwoCamerasAreUnusable) {
  simulated_boards rig = boards_of(preset_of("2-lens0"), 0.1);
  const std::size_t set = rig.set_of(0, 1);
  for (auto& frame : rig.boards[set]) {
    frame[1] = frame[0];
    frame[1].corners.array() += 0.3;  // written and compressed anew
  }
  const rig_check check = checked(rig);
  EXPECT_EQ(verdict_of(check.findings), verdict::unusable);
  const auto found = useless_view_remarks(rig.pictures, rig.boards);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].where, "set pair12");
  EXPECT_EQ(found[0].what,
            "cameras 1 and 2 show the board in the very same place in 10 frames, as if they were "
            "copies of the same pictures");
}

TEST(UselessViews, AllBoardsAtOnePoseAreDoubtful) {
  simulated_boards rig = boards_of(preset_of("2-lens1"), 0);
  for (auto& frames : rig.boards) frames.assign(frames.size(), frames[0]);
  const rig_check check = checked(rig);
  EXPECT_EQ(verdict_of(check.findings), verdict::doubtful);
  int repeats = 0;
  for (const finding& found : check.findings) {
    if (found.what.find("nearly where an earlier one has it") != std::string::npos) ++repeats;
  }
  EXPECT_EQ(repeats, 3);
}

}  // namespace
}  // namespace ocpan

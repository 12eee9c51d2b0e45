#include "tools/check/rig_check.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/tools/check/simulated_boards.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::flip;
using testing::preset_of;
using testing::simulated_boards;

rig_check checked(const simulated_boards& rig) {
  rig_check check;
  check_pictures(check, rig.pictures, rig.boards);
  return check;
}

// The findings of a place whose text holds a part.
std::vector<finding> findings_with(const rig_check& check, const std::string& part) {
  std::vector<finding> found;
  std::copy_if(check.findings.begin(), check.findings.end(), std::back_inserter(found),
               [&](const finding& each) {
                 return (each.where + ": " + each.what).find(part) != std::string::npos;
               });
  return found;
}

TEST(RigCheck, FindsASoundRigGood) {
  const rig_check check = checked(boards_of(preset_of("4-lens1"), 0.1));
  EXPECT_EQ(verdict_of(check.findings), verdict::good);
  EXPECT_TRUE(check.findings.empty()) << check.findings.front().what;
  EXPECT_EQ(check.links.shared[0][1], 8);
  EXPECT_EQ(check.links.shared[0][2], 0);
  EXPECT_EQ(check.links.shared[0][0], 24);
  EXPECT_EQ(check.pictures[3].found, 24);
}

TEST(RigCheck, NamesTheMissingLinkOfARigThatFallsApart) {
  simulated_boards rig = boards_of(preset_of("4-lens0"), 0.1);
  const std::size_t set = rig.set_of(0, 2);  // the fan is 4 2 1 3, by places 3 1 0 2
  for (auto& frame : rig.boards[set]) frame[1].state = picture_state::not_found;
  const rig_check check = checked(rig);
  EXPECT_EQ(verdict_of(check.findings), verdict::unusable);
  EXPECT_EQ(check.links.parts.size(), 2u);
  const auto found = findings_with(check, "the rig falls apart");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_NE(found[0].mend.find("set " + rig.pictures.sets[set].name), std::string::npos);
  EXPECT_NE(found[0].mend.find("cameras 1 and 3"), std::string::npos) << found[0].mend;
}

TEST(RigCheck, NamesTheFramesThatFlip) {
  rig_description description = preset_of("2-lens0");
  description.board.width = 8;
  simulated_boards rig = boards_of(description, 0.1);
  flip(rig.boards[rig.set_of(0, 1)][3][0]);
  const rig_check check = checked(rig);
  EXPECT_EQ(verdict_of(check.findings), verdict::unusable);
  const auto found = findings_with(check, "from different ends");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].where, "set pair12");
  EXPECT_NE(found[0].what.find("cameras 1 and 2"), std::string::npos);
  EXPECT_NE(found[0].what.find("frame 3 (the first: cam1_3.png and cam2_3.png)"), std::string::npos)
      << found[0].what;
}

TEST(RigCheck, NamesTheSetCamerasAndFramesOfAShuffledSeries) {
  simulated_boards rig = boards_of(preset_of("2-lens0"), 0.1);
  auto& frames = rig.boards[rig.set_of(0, 1)];
  std::reverse(frames.begin(), frames.end());
  for (std::size_t i = 0, j = frames.size() - 1; i < j; ++i, --j) {
    std::swap(frames[i][1], frames[j][1]);
  }
  const rig_check check = checked(rig);
  EXPECT_EQ(verdict_of(check.findings), verdict::unusable);
  const auto found = findings_with(check, "don't belong together");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].where, "set pair12");
  EXPECT_NE(found[0].what.find("cameras 1 and 2"), std::string::npos);
  EXPECT_NE(found[0].what.find("frames 0, 1, 2, 3"), std::string::npos) << found[0].what;
}

TEST(RigCheck, TellsOnceOfACameraThatDisagreesWithAllOthers) {
  rig_description description = preset_of("3-lens1");
  // Three fisheyes side by side before one board.
  for (std::size_t camera = 1; camera < 3; ++camera) {
    description.cameras[camera].model = description.cameras[0].model;
    description.cameras[camera].model[C_0] = 60.0 * static_cast<double>(camera);
  }
  description.sets = {{"all", {0, 1, 2}, 10}};
  simulated_boards rig = boards_of(description, 0.1);
  EXPECT_TRUE(findings_with(checked(rig), "set all").empty());
  std::swap(rig.boards[0][1][2], rig.boards[0][7][2]);
  const auto found = findings_with(checked(rig), "set all");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_NE(found[0].what.find("the pictures of camera 3 and of the others"), std::string::npos)
      << found[0].what;
}

TEST(RigCheck, NamesTheDamagedPictures) {
  simulated_boards rig = boards_of(preset_of("2-lens0"), 0.1);
  rig.boards[0][2][0].cut_short = true;
  rig.boards[0][4][0].state = picture_state::unreadable;
  rig.boards[1][5][0].state = picture_state::wrong_size;
  rig.boards[1][5][0].width = 640;
  rig.boards[1][5][0].height = 480;
  rig.boards[1][6][0].state = picture_state::not_found;
  const rig_check check = checked(rig);
  EXPECT_EQ(verdict_of(check.findings), verdict::doubtful);
  EXPECT_EQ(findings_with(check, "cam1_2.png is cut short: the JPEG's end marker").size(), 1u);
  EXPECT_EQ(findings_with(check, "cam1_4.png can't be read").size(), 1u);
  EXPECT_EQ(findings_with(check,
                          "camera 2: pictures of 640 by 480 where the configuration says "
                          "960 by 720: cam2_5.png")
                .size(),
            1u);
  EXPECT_EQ(findings_with(check, "no board found in 1 of 10: cam2_6.png").size(), 1u);
  EXPECT_EQ(check.pictures[0].cut_short, 1);
  EXPECT_EQ(check.pictures[0].unreadable, 1);
  EXPECT_EQ(check.pictures[1].not_found, 1);
}

TEST(RigCheck, TellsOfACameraWithoutBoards) {
  simulated_boards rig = boards_of(preset_of("2-lens0"), 0.1);
  for (auto& set : rig.boards) {
    for (auto& frame : set) frame.back().state = picture_state::not_found;
  }
  const rig_check check = checked(rig);
  EXPECT_EQ(findings_with(check, "camera 2: no board was found in any picture").size(), 1u);
  EXPECT_EQ(verdict_of(check.findings), verdict::unusable);
}

TEST(RigCheck, TellsOfSwappedWidthAndHeightAndNothingThatFollows) {
  simulated_boards rig = boards_of(preset_of("2-lens0"), 0.1);
  rig.pictures.cameras[1].width = 720;
  rig.pictures.cameras[1].height = 960;
  for (auto& set : rig.boards) {
    for (auto& frame : set) {
      frame.back().width = 960;
      frame.back().height = 720;
      if (&set != &rig.boards[0]) frame.back().state = picture_state::wrong_size;
    }
  }
  const rig_check check = checked(rig);
  EXPECT_EQ(findings_with(check, "as if the two were swapped").size(), 1u);
  EXPECT_TRUE(findings_with(check, "no board was found").empty());
  EXPECT_TRUE(findings_with(check, "falls apart").empty());
}

TEST(RigCheck, CountsTheCornersOfEachCell) {
  simulated_boards rig;
  rig.pictures.cameras = {{1600, 900, 80, 0}};
  seen_board board;
  board.cameras = {0};
  board.corners.push_back(Eigen::Matrix2Xd(2, 4));
  // Three in the top left cell of 100 by 100 pixels, one in the bottom right one.
  board.corners[0] << 10, 99, 50, 1599, 10, 99, 20, 899;
  const auto coverage = find_coverage(rig.pictures, {board, board, board, board});
  const auto map = coverage_map(coverage.at(0));
  EXPECT_EQ(map.at(0), "a...............");
  EXPECT_EQ(map.at(8), "...............4");
  EXPECT_NEAR(coverage[0].share, 2.0 / 144, 1e-9);
  // The corner of the picture: its half diagonal of 918 over a focal length of 953 pixels.
  EXPECT_NEAR(coverage[0].farthest_degrees, 43.9, 0.1);
}

TEST(RigCheck, LeavesOutWhatARoundPictureDoesNotShow) {
  rig_pictures pictures;
  pictures.cameras = {{900, 900, 180, 2}};
  const auto map = coverage_map(find_coverage(pictures, {}).at(0));
  EXPECT_EQ(map.at(0).front(), ' ');
  EXPECT_EQ(map.at(4), "................");
}

TEST(RigCheck, FindsFramesThatRepeatAnEarlierOne) {
  simulated_boards rig = boards_of(preset_of("2-lens0"), 0.1);
  const std::size_t set = rig.set_of(0, 1);
  EXPECT_TRUE(find_repeated(rig.boards, rig.pictures).empty());
  rig.boards[set][4] = rig.boards[set][1];
  rig.boards[set][4][1].corners.array() += 2;
  rig.boards[set][6] = rig.boards[set][1];
  rig.boards[set][6][1].corners.array() += 60;  // elsewhere in one of the two
  const auto repeated = find_repeated(rig.boards, rig.pictures);
  ASSERT_EQ(repeated.size(), 1u);
  EXPECT_EQ(repeated[0].set, set);
  EXPECT_EQ(repeated[0].frame, 4u);
  EXPECT_EQ(repeated[0].earlier, 1u);
}

seen_board board_of(std::vector<std::size_t> cameras) {
  seen_board board;
  board.corners.resize(cameras.size(), Eigen::Matrix2Xd::Zero(2, 54));
  board.cameras = std::move(cameras);
  return board;
}

TEST(RigCheck, TellsOfACameraTooManyStepsFromTheFirst) {
  std::vector<seen_board> boards;
  for (std::size_t camera = 0; camera < 6; ++camera) {
    for (int frame = 0; frame < 8; ++frame) {
      boards.push_back(board_of({camera}));
      if (camera > 0) boards.push_back(board_of({camera - 1, camera}));
    }
  }
  rig_pictures pictures;
  pictures.cameras.resize(6);
  const rig_links links = find_links(6, boards);
  EXPECT_EQ(links.steps, (std::vector<int>{0, 1, 2, 3, 4, 5}));
  const auto found = link_remarks(pictures, links);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].where, "camera 6");
  EXPECT_EQ(found[0].weight, verdict::unusable);
}

TEST(RigCheck, DoubtsAJointOfTwoBoards) {
  std::vector<seen_board> boards(8, board_of({0}));
  boards.resize(16, board_of({1}));
  boards.resize(18, board_of({0, 1}));
  rig_pictures pictures;
  pictures.cameras.resize(2);
  const auto found = link_remarks(pictures, find_links(2, boards));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].weight, verdict::doubtful);
  EXPECT_EQ(found[0].where, "cameras 1 and 2");
}

}  // namespace
}  // namespace ocpan

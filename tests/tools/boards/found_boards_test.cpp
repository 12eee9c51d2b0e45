#include "tools/boards/found_boards.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/chessboard_detection.h"
#include "src/result_codes.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"
#include "tools/boards/seen_boards.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::working_folder;
using testing::write_file;

constexpr int square = 18;  // pixels

// 160 by 120 pixels with a board of 4 by 3 inner corners, its top left square at (left, 20).
cv::Mat board_picture(int left) {
  cv::Mat picture(120, 160, CV_8UC1, cv::Scalar(230));
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 5; ++column) {
      if ((row + column) % 2 != 0) continue;
      const cv::Rect black(left + column * square, 20 + row * square, square, square);
      cv::rectangle(picture, black, cv::Scalar(20), cv::FILLED);
    }
  }
  return picture;
}

void write_picture(const std::string& name, const cv::Mat& picture) {
  ASSERT_TRUE(cv::imwrite(name, picture)) << name;
}

// Two cameras; set "one" of camera 1, "two" of camera 2, "both" of the same pictures, and
// "empty", whose pattern fits nothing. Frame 2 of camera 1 has no board, frame 3 of camera 2
// can't be decoded.
class FoundBoards : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory("in");
    std::filesystem::create_directory("out");
    for (int frame = 1; frame <= 3; ++frame) {
      write_picture("in/a" + std::to_string(frame) + ".png", board_picture(20 + 5 * frame));
      write_picture("in/b" + std::to_string(frame) + ".png", board_picture(30 + 5 * frame));
    }
    write_picture("in/a2.png", cv::Mat(120, 160, CV_8UC1, cv::Scalar(128)));
    write_file("in/b3.png", "no picture");
    write_file("rig.txt", configuration());
    ASSERT_EQ(read_rig_pictures(pictures_, said_, "rig.txt"), code::success) << said_;
  }

  static std::string set(const std::string& name, const std::string& cameras,
                         const std::string& patterns) {
    return "  - set_name: '" + name + "', board_scale: 25.0\n    cameras: [" + cameras +
           "]\n    filename_patterns: [" + patterns + "]\n    board_shape: [4, 3]\n";
  }
  static std::string configuration() {
    return "base_directory: 'in'\noutput_filename: 'out/rig.cal'\ncamera_info:\n"
           "  - width: 160, height: 120, hfov: 60, lens: 0\n"
           "  - width: 160, height: 120, hfov: 60, lens: 0\n"
           "calibration_sets:\n" +
           set("one", "1", R"('^a\d\.png$')") + set("two", "2", R"('^b\d\.png$')") +
           set("empty", "1", R"('^c\d\.png$')") +
           set("both", "1, 2", R"('^a\d\.png$', '^b\d\.png$')");
  }

  found_boards find() {
    warnings_.clear();
    looked_at_ = 0;
    return find_boards(
        pictures_,
        [this](int done, int total) {
          if (looked_at_ == 0) first_done_ = done;
          ++looked_at_;
          total_ = total;
        },
        warnings_);
  }

  const working_folder folder_;
  rig_pictures pictures_;
  std::string said_;
  std::vector<std::string> warnings_;
  int looked_at_ = 0;   // progress told
  int first_done_ = 0;  // taken from the corner file
  int total_ = 0;
};

TEST_F(FoundBoards, TheConfigurationIsReadWithoutAWordAndWithoutTheEmptySet) {
  ASSERT_EQ(pictures_.sets.size(), 3u);
  EXPECT_EQ(pictures_.sets[2].name, "both");
  EXPECT_EQ(pictures_.output_file, "out\\rig.cal");
  EXPECT_NE(said_.find("Starting calibration"), said_.npos);
  rig_pictures none;
  EXPECT_EQ(
      printed_by([&] { EXPECT_NE(read_rig_pictures(none, said_, "none.txt"), code::success); }),
      "");
  EXPECT_EQ(said_, "Couldn't open: none.txt\n");
}

TEST_F(FoundBoards, EachPictureGetsItsState) {
  const found_boards boards = find();
  ASSERT_EQ(boards.size(), 3u);
  ASSERT_EQ(boards[2].size(), 3u);
  EXPECT_EQ(boards[0][0][0].state, picture_state::found);
  EXPECT_EQ(boards[0][1][0].state, picture_state::not_found);
  EXPECT_EQ(boards[2][2][1].state, picture_state::unreadable);
  EXPECT_EQ(boards[0][1][0].width, 160);
  EXPECT_EQ(boards[0][1][0].corners.cols(), 0);
  EXPECT_TRUE(warnings_.empty());
}

TEST_F(FoundBoards, WithoutAnOutputNothingIsKept) {
  pictures_.output_file.clear();
  EXPECT_EQ(find().size(), 3u);
  EXPECT_TRUE(warnings_.empty());
  EXPECT_FALSE(std::filesystem::exists("_corners.json"));
}

TEST_F(FoundBoards, TheCornersAreThoseOfACalibration) {
  const board_frames found = frames_of(find());
  board_frames library;
  std::vector<cal_frame_set> sets = pictures_.sets;
  const std::string lines = printed_by([&] { library = detect_boards(sets); });
  int compared = 0;
  for (std::size_t set = 0; set < library.size(); ++set) {
    for (std::size_t frame = 0; frame < library[set].size(); ++frame) {
      for (std::size_t camera = 0; camera < library[set][frame].size(); ++camera) {
        EXPECT_EQ(found[set][frame][camera].found, library[set][frame][camera].found);
        EXPECT_EQ(found[set][frame][camera].corners, library[set][frame][camera].corners);
        compared += library[set][frame][camera].found ? 1 : 0;
      }
    }
  }
  EXPECT_EQ(compared, 8);
}

TEST_F(FoundBoards, APictureThatStandsInTwoSetsIsLookedAtOnce) {
  find();
  EXPECT_EQ(total_, 6);
  EXPECT_EQ(looked_at_, 7);
}

TEST_F(FoundBoards, TheCornerFileStandsBesideTheOutputAndSparesTheSearch) {
  const found_boards first = find();
  EXPECT_TRUE(std::filesystem::exists("out/rig.cal_corners.json"));
  EXPECT_FALSE(std::filesystem::exists("out/rig.cal_corners.json.part"));
  const found_boards second = find();
  EXPECT_EQ(first_done_, 6);
  EXPECT_EQ(looked_at_, 1);
  EXPECT_EQ(second[2][0][1].corners, first[2][0][1].corners);
}

TEST_F(FoundBoards, AChangedPictureAloneIsLookedAtAgain) {
  const found_boards first = find();
  write_picture("in/a1.png", board_picture(40));
  std::filesystem::last_write_time(
      "in/a1.png", std::filesystem::last_write_time("in/a1.png") + std::chrono::hours(1));
  const found_boards second = find();
  EXPECT_EQ(first_done_, 5);
  EXPECT_NEAR(second[0][0][0].corners(0, 0) - first[0][0][0].corners(0, 0), 15, 0.1);
}

TEST_F(FoundBoards, AnotherBoardOrSizeIsAnotherSearch) {
  find();
  pictures_.sets[0].board_width = 3;
  find();
  EXPECT_EQ(first_done_, 6);
  EXPECT_EQ(total_, 9);
}

TEST_F(FoundBoards, APictureOfAnotherSizeIsNamedWithItsSize) {
  write_picture("in/a1.png", cv::Mat(30, 40, CV_8UC1, cv::Scalar(128)));
  const found_boards boards = find();
  EXPECT_EQ(boards[0][0][0].state, picture_state::wrong_size);
  EXPECT_EQ(boards[0][0][0].width, 40);
  EXPECT_EQ(boards[0][0][0].height, 30);
}

TEST_F(FoundBoards, ACutJpegIsNamedThoughItsBoardIsFound) {
  ASSERT_TRUE(cv::imwrite("whole.jpg", board_picture(30)));
  const std::string bytes = read_file("whole.jpg");
  write_file("in/a1.png", bytes.substr(0, bytes.size() - 2));
  const found_boards boards = find();
  EXPECT_EQ(boards[0][0][0].state, picture_state::found);
  EXPECT_TRUE(boards[0][0][0].cut_short);
  EXPECT_FALSE(boards[2][0][1].cut_short);
}

TEST_F(FoundBoards, WithoutAFolderForTheCornerFileTheBoardsAreFoundAllTheSame) {
  pictures_.output_file = "none\\rig.cal";
  const found_boards boards = find();
  EXPECT_EQ(boards[0][0][0].state, picture_state::found);
  ASSERT_EQ(warnings_.size(), 1u);
  EXPECT_NE(warnings_[0].find("the folder none isn't there"), std::string::npos);
}

TEST_F(FoundBoards, APictureOfTwoSetsIsSeenOnceWhereMostCamerasSawTheBoard) {
  const std::vector<seen_board> seen = seen_boards(pictures_, find());
  // a1 and b1 belong together. b2 and a3 are alone in every set, so the earlier sets keep
  // them.
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[0].set, 0u);
  EXPECT_EQ(seen[0].frame, 2u);
  EXPECT_EQ(seen[0].cameras, std::vector<std::size_t>{0});
  EXPECT_EQ(seen[1].set, 1u);
  EXPECT_EQ(seen[1].frame, 1u);
  EXPECT_EQ(seen[1].cameras, std::vector<std::size_t>{1});
  EXPECT_EQ(seen[2].set, 2u);
  EXPECT_EQ(seen[2].frame, 0u);
  EXPECT_EQ(seen[2].cameras, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(seen[2].points.cols(), 12);
  EXPECT_DOUBLE_EQ(seen[2].points(0, 1), 25.0);
  EXPECT_EQ(seen[2].corners[1].cols(), 12);
}

}  // namespace
}  // namespace ocpan

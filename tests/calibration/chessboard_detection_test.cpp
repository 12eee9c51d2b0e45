#include "calibration/chessboard_detection.h"

#include <cmath>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::working_folder;
using testing::write_file;

const std::string found_line = " chessboard successfully \n";
const std::string failed_line = " chessboard failed\n";

constexpr int width = 160;
constexpr int height = 120;
constexpr int square = 18;  // pixels

// A board of 4 by 3 inner corners whose first square has its corner at the pixel (left,
// top): a corner lies between two pixels, half a pixel before its first one.
cv::Mat board_picture(int left, int top) {
  cv::Mat picture(height, width, CV_8UC1, cv::Scalar(230));
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 5; ++column) {
      if ((row + column) % 2 == 0) {
        const cv::Rect black(left + column * square, top + row * square, square, square);
        cv::rectangle(picture, black, cv::Scalar(20), cv::FILLED);
      }
    }
  }
  return picture;
}

cv::Mat plain_picture() { return {height, width, CV_8UC1, cv::Scalar(128)}; }

// A camera whose pictures are named by one letter each in the working folder: "b" has a
// board, "p" is plain, "m" is missing.
set_camera camera_of(int id, const std::string& pictures) {
  EXPECT_TRUE(cv::imwrite("b.png", board_picture(30, 20)));
  EXPECT_TRUE(cv::imwrite("p.png", plain_picture()));
  set_camera camera;
  camera.id = id;
  for (const char picture : pictures) {
    camera.files.push_back(picture == 'b' ? "b.png" : (picture == 'p' ? "p.png" : "m.png"));
  }
  return camera;
}

cal_frame_set set_of(const std::vector<set_camera>& cameras) {
  set_config set;
  set.set_prefix = "s";
  set.cameras = cameras;
  set.board_width = 4;
  set.board_height = 3;
  const std::vector<camera_details> details(3, camera_details{width, height, 60.0f, 0});
  return make_frame_sets({set}, details)[0];
}

// What detect_boards made of one set.
struct detection {
  explicit detection(const cal_frame_set& set) : sets{set} {
    printed = printed_by([&] { views = detect_boards(sets); });
  }
  explicit detection(const std::vector<set_camera>& cameras) : detection(set_of(cameras)) {}
  const std::vector<frame_views>& frames() const { return views.at(0); }

  std::vector<cal_frame_set> sets;
  std::vector<std::vector<frame_views>> views;
  std::string printed;
};

std::string picture_line(int camera, int frame, const std::string& end) {
  return "detect .\\tmp\\s_vid_" + std::to_string(camera) + "_" + std::to_string(frame) + ".jpg" +
         end;
}

TEST(FrameSets, CopyTheConfiguration) {
  const working_folder folder;
  set_config set;
  set.set_prefix = "pair";
  set.cameras = {camera_of(3, "bp"), camera_of(1, "m")};
  set.cameras[0].file_type = 5;
  set.board_width = 9;
  set.board_height = 6;
  set.board_scale = 25.5f;
  set.save_frames = false;
  const auto sets = make_frame_sets({set, set_config{}}, {{64, 48, 60, 0}, {32, 24, 190, 1}, {}});
  ASSERT_EQ(sets.size(), 2u);
  EXPECT_EQ(sets[0].name, "pair");
  EXPECT_EQ(sets[0].camera_indices, (std::vector<std::uint64_t>{2, 0}));
  ASSERT_EQ(sets[0].set_cameras.size(), 2u);
  EXPECT_EQ(sets[0].set_cameras[0].files.size(), 2u);
  EXPECT_EQ(sets[0].set_cameras[0].file_type, 5);
  ASSERT_EQ(sets[0].details.size(), 3u);
  EXPECT_EQ(sets[0].details[1].lens, 1);
  EXPECT_FALSE(sets[0].ran_out);
  EXPECT_EQ(sets[0].board_width, 9);
  EXPECT_EQ(sets[0].board_height, 6);
  EXPECT_EQ(sets[0].board_scale, 25.5);
  EXPECT_FALSE(sets[0].save_frames);
  EXPECT_TRUE(sets[1].save_frames);
  EXPECT_TRUE(sets[1].camera_indices.empty());
}

TEST(FramePictureName, HoldsSetCameraAndFrame) {
  EXPECT_EQ(frame_picture_name("left pair", 1, 12), ".\\tmp\\left pair_vid_1_12.jpg");
}

TEST(DetectBoards, FindsEachCornerToAFractionOfAPixel) {
  const working_folder folder;
  const detection got({camera_of(1, "b")});
  const board_view& view = got.frames().at(0).at(0);
  EXPECT_TRUE(view.found);
  ASSERT_EQ(view.corners.cols(), 12);
  int met = 0;
  for (int row = 1; row <= 3; ++row) {
    for (int column = 1; column <= 4; ++column) {
      const Eigen::Vector2d corner(30 + column * square - 0.5, 20 + row * square - 0.5);
      met += (view.corners.colwise() - corner).colwise().norm().minCoeff() < 0.05;
    }
  }
  EXPECT_EQ(met, 12);
}

TEST(DetectBoards, RefinesTheDetectorsCornersInItsOrder) {
  const working_folder folder;
  const set_camera camera = camera_of(1, "b");
  // Seen aslant, blurred and noisy, so that window and criteria of the refinement show.
  const std::vector<cv::Point2f> upright{{30, 20}, {120, 20}, {120, 92}, {30, 92}};
  const std::vector<cv::Point2f> aslant{{32, 17}, {117, 27}, {126, 95}, {25, 90}};
  cv::Mat picture;
  cv::warpPerspective(board_picture(30, 20), picture, cv::getPerspectiveTransform(upright, aslant),
                      {width, height}, cv::INTER_LINEAR, cv::BORDER_REPLICATE);
  cv::GaussianBlur(picture, picture, {}, 1.0);
  cv::Mat noise(height, width, CV_8UC1);
  cv::RNG(1).fill(noise, cv::RNG::UNIFORM, 0, 20);
  picture += noise;
  ASSERT_TRUE(cv::imwrite("b.png", picture));
  const detection got({camera});
  const board_view& view = got.frames().at(0).at(0);
  std::vector<cv::Point2f> corners;
  ASSERT_TRUE(cv::findChessboardCorners(picture, {4, 3}, corners, 3));
  cv::cornerSubPix(picture, corners, {3, 3}, {-1, -1}, {3, 1000, 0.001});
  ASSERT_EQ(view.corners.cols(), 12);
  for (int k = 0; k < 12; ++k) {
    EXPECT_EQ(view.corners(0, k), corners[static_cast<std::size_t>(k)].x);
    EXPECT_EQ(view.corners(1, k), corners[static_cast<std::size_t>(k)].y);
  }
}

TEST(DetectBoards, FindsABoardInVeryUnevenLight) {
  const working_folder folder;
  const set_camera camera = camera_of(1, "b");
  // The light falls to 1/1800 from left to right. Fails without either of the two flags.
  cv::Mat picture = board_picture(30, 20);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double paper = picture.at<uchar>(y, x) > 128 ? 240 : 6;
      picture.at<uchar>(y, x) = cv::saturate_cast<uchar>(paper * std::exp(-7.5 * x / width));
    }
  }
  ASSERT_TRUE(cv::imwrite("b.png", picture));
  EXPECT_TRUE(detection({camera}).frames()[0][0].found);
}

TEST(DetectBoards, TellsAndDrawsEachPicture) {
  const working_folder folder;
  std::filesystem::create_directory("tmp");
  const detection got({camera_of(1, "bp"), camera_of(3, "pb")});
  EXPECT_EQ(got.printed, "This cal_frame_set_number: 2\n" + picture_line(0, 0, found_line) +
                             picture_line(1, 0, failed_line) + picture_line(0, 1, failed_line) +
                             picture_line(1, 1, found_line));
  ASSERT_EQ(got.frames().size(), 2u);
  EXPECT_TRUE(got.frames()[0][0].found);
  EXPECT_FALSE(got.frames()[0][1].found);
  EXPECT_EQ(got.frames()[0][1].corners.cols(), 0);
  EXPECT_FALSE(got.frames()[1][0].found);
  EXPECT_TRUE(got.frames()[1][1].found);
  // A found board is drawn in colour, a failed one in grey.
  EXPECT_EQ(cv::imread("tmp/s_vid_0_0.jpg", cv::IMREAD_UNCHANGED).type(), CV_8UC3);
  EXPECT_EQ(cv::imread("tmp/s_vid_1_0.jpg", cv::IMREAD_UNCHANGED).type(), CV_8UC1);
  EXPECT_EQ(cv::imread("tmp/s_vid_0_1.jpg", cv::IMREAD_UNCHANGED).type(), CV_8UC1);
  EXPECT_EQ(cv::imread("tmp/s_vid_1_1.jpg", cv::IMREAD_UNCHANGED).type(), CV_8UC3);
}

TEST(DetectBoards, DrawsTheCornersOfAFoundBoard) {
  const working_folder folder;
  std::filesystem::create_directory("tmp");
  const detection got({camera_of(1, "b")});
  cv::Mat expected;
  cv::cvtColor(board_picture(30, 20), expected, cv::COLOR_GRAY2BGR);
  std::vector<cv::Point2f> corners;
  const Eigen::Matrix2Xd& found = got.frames().at(0).at(0).corners;
  for (Eigen::Index k = 0; k < found.cols(); ++k) {
    corners.emplace_back(static_cast<float>(found(0, k)), static_cast<float>(found(1, k)));
  }
  cv::drawChessboardCorners(expected, {4, 3}, corners, true);
  ASSERT_TRUE(cv::imwrite("expected.jpg", expected));
  EXPECT_EQ(read_file("tmp/s_vid_0_0.jpg"), read_file("expected.jpg"));
}

TEST(DetectBoards, WithoutSaveFramesTellsAndDrawsFailedBoardsOnly) {
  const working_folder folder;
  std::filesystem::create_directory("tmp");
  cal_frame_set set = set_of({camera_of(1, "bp")});
  set.save_frames = false;
  const detection got(set);
  EXPECT_EQ(got.printed, "This cal_frame_set_number: 2\n" + picture_line(0, 1, failed_line));
  EXPECT_TRUE(got.frames()[0][0].found);
  EXPECT_FALSE(std::filesystem::exists("tmp/s_vid_0_0.jpg"));
  EXPECT_TRUE(std::filesystem::exists("tmp/s_vid_0_1.jpg"));
}

TEST(DetectBoards, RunsUnharmedWithoutAFolderForPictures) {
  const working_folder folder;
  const detection got({camera_of(1, "bp")});
  EXPECT_EQ(got.printed, "This cal_frame_set_number: 2\n" + picture_line(0, 0, found_line) +
                             picture_line(0, 1, failed_line));
  EXPECT_TRUE(got.frames()[0][0].found);
  EXPECT_FALSE(std::filesystem::exists("tmp"));
  const auto entries = std::filesystem::directory_iterator(".");
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 2);  // b.png and p.png
}

TEST(DetectBoards, RunsUnharmedWithAFileInPlaceOfTheFolder) {
  const working_folder folder;
  write_file("tmp", "a file");
  EXPECT_TRUE(detection({camera_of(1, "b")}).frames()[0][0].found);
  EXPECT_EQ(read_file("tmp"), "a file");
}

TEST(DetectBoards, TakesAsManyFramesAsTheCameraWithTheFewestFiles) {
  const working_folder folder;
  const detection got({camera_of(1, std::string(10, 'm')), camera_of(2, std::string(8, 'm'))});
  EXPECT_EQ(got.frames().size(), 8u);
  EXPECT_EQ(got.printed.substr(0, 30), "This cal_frame_set_number: 8\nE");
}

TEST(DetectBoards, NotesThatFilesRanOut) {
  const working_folder folder;
  EXPECT_TRUE(detection({camera_of(1, "ppp"), camera_of(2, "pp")}).sets[0].ran_out);
  EXPECT_TRUE(detection({camera_of(1, "p")}).sets[0].ran_out);
  // The frame ends before the camera that would run out is reached.
  EXPECT_FALSE(detection({camera_of(1, "mm"), camera_of(2, "p")}).sets[0].ran_out);
}

TEST(DetectBoards, AMissingSecondPictureLeavesTheFirstView) {
  const working_folder folder;
  const detection got({camera_of(1, "bb"), camera_of(2, "mb")});
  EXPECT_EQ(got.printed, "This cal_frame_set_number: 2\n" + picture_line(0, 0, found_line) +
                             "Error opening image file m.png\n" + picture_line(0, 1, found_line) +
                             picture_line(1, 1, found_line));
  ASSERT_EQ(got.frames().size(), 2u);
  ASSERT_EQ(got.frames()[0].size(), 1u);
  EXPECT_TRUE(got.frames()[0][0].found);
  EXPECT_EQ(got.frames()[1].size(), 2u);
}

TEST(DetectBoards, AMissingFirstPictureLeavesNoView) {
  const working_folder folder;
  const detection got({camera_of(1, "mb"), camera_of(2, "bb")});
  ASSERT_EQ(got.frames().size(), 2u);
  EXPECT_TRUE(got.frames()[0].empty());
  EXPECT_EQ(got.frames()[1].size(), 2u);
}

TEST(DetectBoards, TakesThePicturesSizeFromTheCamerasDetails) {
  const working_folder folder;
  cal_frame_set set = set_of({camera_of(3, "b")});
  set.details[0].width = set.details[1].width = width + 1;
  EXPECT_EQ(detection(set).frames()[0].size(), 1u);
  set.details[2].width = width + 1;
  EXPECT_TRUE(detection(set).frames()[0].empty());
}

TEST(DetectBoards, ReadsRawPicturesByTheCamerasFileType) {
  const working_folder folder;
  const cv::Mat board = board_picture(30, 20);
  write_file("b.raw", std::string(board.begin<char>(), board.end<char>()));
  set_camera camera = camera_of(1, "b");
  camera.files[0] = "b.raw";
  camera.file_type = 1;
  EXPECT_TRUE(detection({camera}).frames()[0][0].found);
}

TEST(DetectBoards, ACutJpegHasNoBoard) {
  const working_folder folder;
  ASSERT_TRUE(cv::imwrite("whole.jpg", board_picture(30, 20)));
  const std::string whole = read_file("whole.jpg");
  write_file("cut.jpg", whole.substr(0, whole.size() / 2));
  set_camera camera = camera_of(1, "b");
  camera.files = {"whole.jpg", "cut.jpg"};
  const detection got({camera});
  EXPECT_TRUE(got.frames()[0][0].found);
  ASSERT_EQ(got.frames()[1].size(), 1u);
  EXPECT_FALSE(got.frames()[1][0].found);
}

TEST(DetectBoards, ABoardThatTheDetectorRefusesIsNotFound) {
  const working_folder folder;
  cal_frame_set set = set_of({camera_of(1, "b")});
  set.board_height = 2;  // OpenCV throws below 3
  const detection got(set);
  EXPECT_EQ(got.printed, "This cal_frame_set_number: 1\n" + picture_line(0, 0, failed_line));
  EXPECT_FALSE(got.frames()[0][0].found);
}

TEST(DetectBoards, ABoardBeyondAllMemoryIsNotFound) {
  const working_folder folder;
  cal_frame_set set = set_of({camera_of(1, "b")});
  set.board_width = set.board_height = 2000000000;
  EXPECT_FALSE(detection(set).frames()[0][0].found);
}

TEST(DetectBoards, TheSmallestBoardHasThreeCornersASide) {
  const working_folder folder;
  cal_frame_set set = set_of({camera_of(1, "b")});
  set.board_width = set.board_height = 3;
  cv::Mat picture = board_picture(30, 20);
  picture.colRange(30 + 4 * square, width) = 230;
  ASSERT_TRUE(cv::imwrite("b.png", picture));
  EXPECT_EQ(detection(set).frames()[0][0].corners.cols(), 9);
}

TEST(DetectBoards, SetsFollowOneAnother) {
  const working_folder folder;
  std::vector<cal_frame_set> sets{set_of({camera_of(1, "p")}), set_of({}),
                                  set_of({camera_of(2, "pp")})};
  std::vector<std::vector<frame_views>> views;
  EXPECT_EQ(printed_by([&] { views = detect_boards(sets); }),
            "This cal_frame_set_number: 1\n" + picture_line(0, 0, failed_line) +
                "This cal_frame_set_number: 0\n" + "This cal_frame_set_number: 2\n" +
                picture_line(0, 0, failed_line) + picture_line(0, 1, failed_line));
  ASSERT_EQ(views.size(), 3u);
  EXPECT_EQ(views[0].size(), 1u);
  EXPECT_EQ(views[1].size(), 0u);
  EXPECT_EQ(views[2].size(), 2u);
}

}  // namespace
}  // namespace ocpan

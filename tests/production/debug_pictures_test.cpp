#include "production/debug_pictures.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

class DebugPictures : public ::testing::Test {
 protected:
  DebugPictures() { std::filesystem::create_directory("tmp"); }

  static cv::Mat read(const std::string& name) { return cv::imread("tmp/" + name + ".jpg"); }
  // JPEG mixes colours: counts the pixels that are clearly no grey.
  static int coloured_pixels(const cv::Mat& picture, const cv::Rect& where) {
    int count = 0;
    for (int y = where.y; y < where.br().y; ++y) {
      for (int x = where.x; x < where.br().x; ++x) {
        const auto pixel = picture.at<cv::Vec3b>(y, x);
        const auto [low, high] = std::minmax({pixel[0], pixel[1], pixel[2]});
        count += high - low > 60;
      }
    }
    return count;
  }

  static double largest_change(const cv::Mat& picture) {
    return cv::norm(picture, cv::Mat(picture.size(), CV_8UC3, cv::Scalar::all(128)), cv::NORM_INF);
  }

  testing::working_folder folder_;
  const cv::Mat grey_ = cv::Mat(64, 96, CV_8UC1, cv::Scalar(128));
  const std::vector<prod_corner> corners_{
      {20.4, 30.6, 1, 0, 0, 1}, {60, 30, 1, 0, 0, 1}, {60, 50, 1, 0, 0, 1}, {20, 50, 1, 0, 0, 1}};
};

TEST_F(DebugPictures, MarkEachCornerByARedCross) {
  write_corner_picture(grey_, {corners_[0]}, 3);
  const cv::Mat picture = read("0.ori_point_3");
  ASSERT_EQ(picture.size(), grey_.size());
  for (const cv::Point at : {cv::Point(20, 31), cv::Point(16, 31), cv::Point(20, 35)}) {
    const auto pixel = picture.at<cv::Vec3b>(at);
    EXPECT_GT(pixel[2], pixel[0] + 60) << at;
    EXPECT_GT(pixel[2], pixel[1] + 60) << at;
  }
  EXPECT_EQ(coloured_pixels(picture, {32, 0, 64, 64}), 0);
}

TEST_F(DebugPictures, ClipCrossesAtTheBorder) {
  write_corner_picture(grey_, {{0, 0, 1, 0, 0, 1}, {95.6, 63.7, 1, 0, 0, 1}}, 0);
  const cv::Mat picture = read("0.ori_point_0");
  ASSERT_FALSE(picture.empty());
  EXPECT_GT(coloured_pixels(picture, {0, 0, 8, 8}), 5);
}

TEST_F(DebugPictures, DrawQuadsOfEachColourApart) {
  write_quad_pictures(grey_, corners_, {{{0, 1, 2, 3}}, {}}, 1);
  const cv::Mat white = read("1.white_quads_1");
  const cv::Mat black = read("1.black_quads_1");
  ASSERT_EQ(white.size(), grey_.size());
  ASSERT_EQ(black.size(), grey_.size());
  EXPECT_GT(coloured_pixels(white, {30, 48, 20, 5}), 15);  // an edge
  EXPECT_GT(coloured_pixels(white, {36, 36, 8, 9}), 4);    // the number at the centre
  EXPECT_EQ(coloured_pixels(black, {0, 0, 96, 64}), 0);
}

TEST_F(DebugPictures, NumberTheMatchesOfBothCameras) {
  const std::vector<cv::Mat> pictures(3, grey_);
  const std::vector<std::vector<prod_corner>> corners{{}, corners_, corners_};
  write_match_pictures("2.naive_matches_", {1, 2}, {{0, 1}, {2, 3}}, pictures, corners);
  const cv::Mat first = read("2.naive_matches_12_1");
  const cv::Mat second = read("2.naive_matches_12_2");
  ASSERT_EQ(first.size(), grey_.size());
  ASSERT_EQ(second.size(), grey_.size());
  // The first camera's corners stand in rows 30 and 31, the second's in row 50.
  EXPECT_GT(largest_change(first.rowRange(24, 40)), 12);
  EXPECT_LT(largest_change(first.rowRange(48, 64)), 5);
  EXPECT_GT(largest_change(second.rowRange(44, 60)), 12);
  EXPECT_LT(largest_change(second.rowRange(0, 32)), 5);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("tmp"), {}), 2);
}

TEST_F(DebugPictures, AreWrittenWithoutAMatchToo) {
  write_match_pictures("3.matches_", {0, 1}, {}, {grey_, grey_}, {corners_, corners_});
  EXPECT_EQ(coloured_pixels(read("3.matches_01_0"), {0, 0, 96, 64}), 0);
  EXPECT_FALSE(read("3.matches_01_1").empty());
}

TEST_F(DebugPictures, AreLeftOutWithoutTheFolder) {
  std::filesystem::remove("tmp");
  EXPECT_EQ(testing::printed_by([&] {
              write_corner_picture(grey_, corners_, 0);
              write_quad_pictures(grey_, corners_, {{{0, 1, 2, 3}}, {}}, 0);
              write_match_pictures("3.matches_", {0, 1}, {}, {grey_, grey_}, {corners_, corners_});
            }),
            "");
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

}  // namespace
}  // namespace ocpan

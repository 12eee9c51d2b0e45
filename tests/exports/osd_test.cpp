#include <cmath>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "include/oc_pan_cal.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::temp_folder;
using testing::write_file;

class Osd : public ::testing::Test {
 protected:
  // Runs the export, keeping its result and what it prints.
  void run(const char* from, const char* to, int width, int height) {
    printed = printed_by([&] { result = ocPAN_CreateOsd(from, to, width, height); });
  }
  void write_square(int side, const cv::Scalar& colour = {10, 20, 30}) {
    cv::imwrite(input, cv::Mat(side, side, CV_8UC3, colour));
  }

  temp_folder folder;
  std::string input = folder.file("in.bmp");
  std::string output = folder.file("out.bmp");
  int result = 99;
  std::string printed;
};

TEST_F(Osd, RefusesSizesOutOfRange) {
  write_square(20);
  const struct {
    int width;
    int height;
    const char* text;
  } cases[] = {
      {16, 100, "Width (16) and height (100) Range:16-16384\n"},
      {100, 16, "Width (100) and height (16) Range:16-16384\n"},
      {16385, 100, "Width (16385) and height (100) Range:16-16384\n"},
      {100, 16385, "Width (100) and height (16385) Range:16-16384\n"},
      {0, -5, "Width (0) and height (-5) Range:16-16384\n"},
  };
  int checked = 0;
  for (const auto& c : cases) {
    run(input.c_str(), output.c_str(), c.width, c.height);
    EXPECT_EQ(result, OCPAN_INVALID);
    EXPECT_EQ(printed, c.text);
    ++checked;
  }
  EXPECT_EQ(checked, 5);
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(Osd, TestsTheSizeBeforeTheNames) {
  run(nullptr, nullptr, 16, 17);
  EXPECT_EQ(result, OCPAN_INVALID);
  EXPECT_EQ(printed, "Width (16) and height (17) Range:16-16384\n");
}

TEST_F(Osd, RefusesNullNamesQuietly) {
  write_square(20);
  run(nullptr, output.c_str(), 17, 17);
  EXPECT_EQ(result, OCPAN_INVALID);
  EXPECT_EQ(printed, "");
  EXPECT_FALSE(std::filesystem::exists(output));
  run(input.c_str(), nullptr, 17, 17);
  EXPECT_EQ(result, OCPAN_INVALID);
  EXPECT_EQ(printed, "");
}

TEST_F(Osd, AcceptsTheCornersOfTheSizeRange) {
  write_square(20);
  const struct {
    int width;
    int height;
  } sizes[] = {{17, 17}, {17, 16384}, {16384, 17}};
  int checked = 0;
  for (const auto& size : sizes) {
    run(input.c_str(), output.c_str(), size.width, size.height);
    EXPECT_EQ(result, OCPAN_SUCCESS);
    EXPECT_EQ(printed, "");
    const cv::Mat picture = cv::imread(output);
    EXPECT_EQ(picture.cols, size.width);
    EXPECT_EQ(picture.rows, size.height);
    ++checked;
  }
  EXPECT_EQ(checked, 3);
}

TEST_F(Osd, ReportsAnInputThatCannotBeOpened) {
  write_file(output, "older");
  const std::string missing = folder.file("missing.png");
  run(missing.c_str(), output.c_str(), 17, 17);
  EXPECT_EQ(result, OCPAN_INPUT);
  EXPECT_EQ(printed, "Couldn't open: " + missing + "\n");
  EXPECT_EQ(read_file(output), "older");
}

TEST_F(Osd, TakesAFolderAsAFileThatCannotBeOpened) {
  const std::string name = folder.path().string();
  run(name.c_str(), output.c_str(), 17, 17);
  EXPECT_EQ(result, OCPAN_INPUT);
  EXPECT_EQ(printed, "Couldn't open: " + name + "\n");
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(Osd, ReportsAnInputWithoutAPictureAndLeavesTheOutputEmpty) {
  write_file(input, "no picture");
  write_file(output, "older");
  run(input.c_str(), output.c_str(), 17, 17);
  EXPECT_EQ(result, OCPAN_INPUT);
  EXPECT_EQ(printed, "Couldn't open: " + input + "\n");
  ASSERT_TRUE(std::filesystem::exists(output));
  EXPECT_EQ(read_file(output), "");
}

TEST_F(Osd, RefusesAPictureThatIsNotSquareAndLeavesTheOutputEmpty) {
  cv::imwrite(input, cv::Mat(20, 30, CV_8UC3, cv::Scalar::all(0)));
  run(input.c_str(), output.c_str(), 17, 17);
  EXPECT_EQ(result, OCPAN_INVALID);
  EXPECT_EQ(printed, "Width (30) and height (20) must be the same\n");
  ASSERT_TRUE(std::filesystem::exists(output));
  EXPECT_EQ(read_file(output), "");
}

TEST_F(Osd, DoesNotNoticeAnOutputThatCannotBeWritten) {
  write_square(20);
  const std::string nowhere = folder.file("no_such_folder/out.bmp");
  run(input.c_str(), nowhere.c_str(), 17, 17);
  EXPECT_EQ(result, OCPAN_SUCCESS);
  EXPECT_EQ(printed, "");
  EXPECT_FALSE(std::filesystem::exists(nowhere));
}

TEST_F(Osd, FailsForAnOutputOfUnknownEnding) {
  write_square(20);
  const std::string unknown = folder.file("out.unknown");
  run(input.c_str(), unknown.c_str(), 17, 17);
  EXPECT_EQ(result, OCPAN_FAILURE);
  EXPECT_EQ(printed.rfind("Unexpected failure: ", 0), 0u);
  EXPECT_EQ(printed.find('\n'), printed.size() - 1);
}

TEST_F(Osd, EmptiesAnInputThatIsTheOutput) {
  write_square(20);
  run(input.c_str(), input.c_str(), 17, 17);
  EXPECT_EQ(result, OCPAN_INPUT);
  EXPECT_EQ(printed, "Couldn't open: " + input + "\n");
  EXPECT_EQ(read_file(input), "");
}

#ifndef _WIN32
TEST_F(Osd, OpensNamesWithBackslashes) {
  std::filesystem::create_directory(folder.path() / "sub");
  cv::imwrite(folder.file("sub/in.bmp"), cv::Mat(20, 20, CV_8UC3, cv::Scalar::all(9)));
  run(folder.file("sub\\in.bmp").c_str(), folder.file("sub\\out.bmp").c_str(), 17, 18);
  EXPECT_EQ(result, OCPAN_SUCCESS);
  EXPECT_FALSE(cv::imread(folder.file("sub/out.bmp")).empty());
}
#endif

TEST_F(Osd, ReadsGreyPicturesInColour) {
  cv::imwrite(input, cv::Mat(20, 20, CV_8UC1, cv::Scalar(77)));
  run(input.c_str(), output.c_str(), 17, 40);
  EXPECT_EQ(result, OCPAN_SUCCESS);
  EXPECT_EQ(cv::imread(output).at<cv::Vec3b>(39, 5), cv::Vec3b(77, 77, 77));
}

TEST_F(Osd, PutsThePositiveAxisAtThreeQuartersOfTheWidth) {
  // A bright ray along the positive x axis of a 101 x 101 picture, whose centre is (50, 50).
  cv::Mat square(101, 101, CV_8UC3, cv::Scalar::all(0));
  square(cv::Rect(50, 50, 51, 1)).setTo(cv::Scalar::all(255));
  cv::imwrite(input, square);
  run(input.c_str(), output.c_str(), 20, 51);
  ASSERT_EQ(result, OCPAN_SUCCESS);
  const cv::Mat rectangle = cv::imread(output);
  // At radius 50, 20 columns are 15 pixels apart, so the neighbours don't see the ray.
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(rectangle.at<cv::Vec3b>(0, i)[0], i == 15 ? 255 : 0) << i;
  }
}

TEST_F(Osd, PutsRowZeroOnTheRimAndTheLastRowOneStepFromTheCentre) {
  // Red tells the distance from the centre (64, 64) in a 128 x 128 picture.
  cv::Mat square(128, 128, CV_8UC3);
  for (int y = 0; y < 128; ++y) {
    for (int x = 0; x < 128; ++x) {
      const auto distance = static_cast<unsigned char>(std::lround(2 * std::hypot(x - 64, y - 64)));
      square.at<cv::Vec3b>(y, x) = cv::Vec3b(0, 0, distance);
    }
  }
  cv::imwrite(input, square);
  run(input.c_str(), output.c_str(), 40, 32);  // one step is 2 pixels
  ASSERT_EQ(result, OCPAN_SUCCESS);
  const cv::Mat rectangle = cv::imread(output);
  // Column 10 lies on the negative x axis, where the rim is still in the picture.
  EXPECT_EQ(rectangle.at<cv::Vec3b>(0, 10)[2], 128);
  EXPECT_EQ(rectangle.at<cv::Vec3b>(1, 10)[2], 124);
  EXPECT_EQ(rectangle.at<cv::Vec3b>(31, 10)[2], 4);
  // On the positive axis the rim is one pixel outside: black.
  EXPECT_EQ(rectangle.at<cv::Vec3b>(0, 30)[2], 0);
  EXPECT_EQ(rectangle.at<cv::Vec3b>(1, 30)[2], 124);
}

// A picture whose pixels tell cosine and sine of their angle, and their radius.
cv::Mat polar_picture(int side) {
  const int centre = side / 2;
  cv::Mat picture(side, side, CV_8UC3);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const double angle = std::atan2(y - centre, x - centre);
      picture.at<cv::Vec3b>(y, x) =
          cv::Vec3b(static_cast<unsigned char>(std::lround(128 + 100 * std::cos(angle))),
                    static_cast<unsigned char>(std::lround(128 + 100 * std::sin(angle))),
                    static_cast<unsigned char>(std::lround(std::hypot(x - centre, y - centre))));
    }
  }
  return picture;
}

TEST_F(Osd, MapsAnglesToColumnsAndRadiiToRows) {
  const double pi = std::acos(-1.0);
  const struct {
    int side;
    int width;
    int height;
  } cases[] = {{300, 17, 17},    {301, 18, 40},    {300, 30, 23},  {257, 100, 33},
               {300, 16384, 17}, {300, 17, 16384}, {300, 103, 201}};
  int checked = 0;
  for (const auto& c : cases) {
    cv::imwrite(input, polar_picture(c.side));
    run(input.c_str(), output.c_str(), c.width, c.height);
    ASSERT_EQ(result, OCPAN_SUCCESS);
    const cv::Mat rectangle = cv::imread(output);
    ASSERT_EQ(rectangle.size(), cv::Size(c.width, c.height));
    const int stride = c.width * c.height > 100000 ? 37 : 1;
    const int row_step = c.height > 1000 ? stride : 1;
    const int column_step = c.width > 1000 ? stride : 1;
    for (int j = 0; j < c.height; j += row_step) {
      const double radius = c.side / 2 - j * (c.side * 0.5 / c.height);
      // Beyond lies the picture's edge; nearer to the centre a pixel spans wide angles.
      if (radius > c.side / 2 - 1.5 || radius < 20) continue;
      for (int i = 0; i < c.width; i += column_step) {
        const double angle = 2 * pi * (c.width / 4 + i) / c.width;
        const cv::Vec3b pixel = rectangle.at<cv::Vec3b>(j, i);
        ASSERT_NEAR(pixel[0], 128 + 100 * std::cos(angle), 1.5) << j << " " << i;
        ASSERT_NEAR(pixel[1], 128 + 100 * std::sin(angle), 1.5) << j << " " << i;
        ASSERT_NEAR(pixel[2], radius, 1.5) << j << " " << i;
        ++checked;
      }
    }
  }
  EXPECT_GT(checked, 30000);
}

}  // namespace
}  // namespace ocpan

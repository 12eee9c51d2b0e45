#include "calibration/read_image.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "src/result_codes.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::temp_folder;
using testing::working_folder;
using testing::write_file;

// What read_image made of a file.
struct read_picture {
  read_picture(const char* name, int filetype, int width, int height) {
    printed = printed_by([&] { result = read_image(picture, name, filetype, width, height); });
  }
  read_picture(const std::string& name, int filetype, int width, int height)
      : read_picture(name.c_str(), filetype, width, height) {}
  std::vector<int> pixels() const { return {picture.begin<uchar>(), picture.end<uchar>()}; }

  cv::Mat picture;
  int result = 0;
  std::string printed;
};

// Grey levels that grow along the rows.
cv::Mat ramp(int width, int height) {
  cv::Mat picture(height, width, CV_8UC1);
  for (int i = 0; i < width * height; ++i) picture.at<uchar>(i / width, i % width) = i % 251;
  return picture;
}

std::string written(const temp_folder& folder, const std::string& name, const cv::Mat& picture) {
  EXPECT_TRUE(cv::imwrite(folder.file(name), picture));
  return folder.file(name);
}

TEST(ReadImage, GivesAGreyPictureAsItIs) {
  const temp_folder folder;
  const cv::Mat grey = ramp(40, 30);
  const read_picture got(written(folder, "a.png", grey), 0, 40, 30);
  EXPECT_EQ(got.result, code::success);
  EXPECT_EQ(got.printed, "");
  ASSERT_EQ(got.picture.type(), CV_8UC1);
  ASSERT_EQ(got.picture.size(), grey.size());
  EXPECT_EQ(cv::norm(got.picture, grey, cv::NORM_INF), 0);
}

TEST(ReadImage, WeighsTheColours) {
  const temp_folder folder;
  // 0.299 red, 0.587 green, 0.114 blue.
  const cv::Mat colour = (cv::Mat_<cv::Vec3b>(1, 3) << cv::Vec3b(0, 0, 100), cv::Vec3b(0, 100, 0),
                          cv::Vec3b(100, 0, 0));
  const read_picture got(written(folder, "a.png", colour), 0, 3, 1);
  EXPECT_EQ(got.pixels(), (std::vector<int>{30, 59, 11}));
}

TEST(ReadImage, TakesBackslashesInAName) {
  const working_folder folder;
  std::filesystem::create_directory("sub");
  EXPECT_TRUE(cv::imwrite("sub/a.png", ramp(4, 3)));
  write_file("sub/a.raw", std::string(12, 'x'));
  EXPECT_EQ(read_picture(".\\sub\\a.png", 0, 4, 3).result, code::success);
  EXPECT_EQ(read_picture(".\\sub\\a.raw", 1, 4, 3).result, code::success);
}

TEST(ReadImage, RefusesAMissingName) {
  for (const int filetype : {0, 1, 9}) {
    const read_picture got(nullptr, filetype, 0, 0);
    EXPECT_EQ(got.result, code::argument_invalid);
    EXPECT_EQ(got.printed, "No filename was given\n");
  }
}

TEST(ReadImage, RefusesASizeThatIsntAboveZero) {
  const read_picture flat("no such file", 0, 640, 0);
  EXPECT_EQ(flat.result, code::argument_invalid);
  EXPECT_EQ(flat.printed,
            "Width (640) and height (0) must be greater than zero for file: no such file\n");
  const read_picture negative("no such file", 1, -1, 480);
  EXPECT_EQ(negative.result, code::argument_invalid);
  EXPECT_EQ(negative.printed,
            "Width (-1) and height (480) must be greater than zero for file: no such file\n");
}

void expect_undecodable(const std::string& name, int width, int height) {
  const read_picture got(name, 0, width, height);
  EXPECT_EQ(got.result, code::content_malformed);
  EXPECT_EQ(got.printed, "Error opening image file " + name + "\n");
}

TEST(ReadImage, CantDecodeAMissingFile) { expect_undecodable("no such folder\\a.png", 4, 3); }

TEST(ReadImage, CantDecodeAFolder) {
  const temp_folder folder;
  std::filesystem::create_directory(folder.file("a.png"));
  expect_undecodable(folder.file("a.png"), 4, 3);
}

TEST(ReadImage, CantDecodeAFileOfNoBytes) {
  const temp_folder folder;
  write_file(folder.file("a.jpg"), "");
  expect_undecodable(folder.file("a.jpg"), 4, 3);
}

TEST(ReadImage, CantDecodeWhatIsNoPicture) {
  const temp_folder folder;
  write_file(folder.file("a.jpg"), std::string(1000, 'x'));
  expect_undecodable(folder.file("a.jpg"), 4, 3);
}

TEST(ReadImage, CantDecodeACutPng) {
  const temp_folder folder;
  const std::string whole = read_file(written(folder, "whole.png", ramp(200, 150)));
  write_file(folder.file("cut.png"), whole.substr(0, whole.size() / 2));
  expect_undecodable(folder.file("cut.png"), 200, 150);
}

TEST(ReadImage, DecodesACutJpeg) {
  const temp_folder folder;
  const std::string whole = read_file(written(folder, "whole.jpg", ramp(200, 150)));
  write_file(folder.file("cut.jpg"), whole.substr(0, whole.size() / 2));
  const read_picture got(folder.file("cut.jpg"), 0, 200, 150);
  EXPECT_EQ(got.result, code::success);
  EXPECT_EQ(got.picture.size(), cv::Size(200, 150));
}

TEST(ReadImage, CantDecodeAHeaderOfSixtyThousandBySixtyThousand) {
  const temp_folder folder;
  // A bitmap: "BM", file size, 0, offset of the pixels, header size 40, width, height, one
  // plane of 24 bits.
  std::string bytes("BM\x36\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x60\xea\0\0\x60\xea\0\0\1\0\x18\0",
                    30);
  bytes.resize(1000);
  write_file(folder.file("a.bmp"), bytes);
  expect_undecodable(folder.file("a.bmp"), 60000, 60000);
}

TEST(ReadImage, RefusesACodedPictureOfAnotherSize) {
  const temp_folder folder;
  const std::string name = written(folder, "a.png", ramp(41, 30));
  const auto expect_refused = [&](int width, int height) {
    const read_picture got(name, 0, width, height);
    EXPECT_EQ(got.result, code::input_unusable);
    const std::string begin = "Bad or no Image Data for file " + name + " (data=0x";
    const std::string end = ", rows=30, cols=41, width=" + std::to_string(width) +
                            ", height=" + std::to_string(height) + ")\n";
    EXPECT_EQ(got.printed.substr(0, begin.size()), begin);
    EXPECT_EQ(got.printed.substr(got.printed.find(',')), end);
  };
  expect_refused(40, 30);
  expect_refused(41, 31);
  expect_refused(30, 41);
}

TEST(ReadImage, TakesRawBytesRowAfterRow) {
  const temp_folder folder;
  write_file(folder.file("a.raw"), std::string("\0\1\2\x7f\x80\xff", 6));
  for (const int filetype : {1, 2, 3, 4}) {
    const read_picture got(folder.file("a.raw"), filetype, 3, 2);
    EXPECT_EQ(got.result, code::success);
    EXPECT_EQ(got.printed, "");
    ASSERT_EQ(got.picture.type(), CV_8UC1);
    ASSERT_EQ(got.picture.size(), cv::Size(3, 2));
    EXPECT_EQ(got.pixels(), (std::vector<int>{0, 1, 2, 127, 128, 255}));
  }
}

TEST(ReadImage, TakesTheUpperEightOfTenRawBits) {
  const temp_folder folder;
  // 4, 0x1fc, 1023, 1024 (which is 256 behind the shift), 0xffff, low bytes first.
  write_file(folder.file("a.raw"), std::string("\4\0\xfc\1\xff\3\0\4\xff\xff", 10));
  for (const int filetype : {5, 6, 7, 8}) {
    const read_picture got(folder.file("a.raw"), filetype, 5, 1);
    EXPECT_EQ(got.result, code::success);
    EXPECT_EQ(got.pixels(), (std::vector<int>{1, 127, 255, 0, 255}));
  }
}

TEST(ReadImage, LeavesTheRestOfALongerRawFile) {
  const temp_folder folder;
  write_file(folder.file("a.raw"), "abcdef");
  EXPECT_EQ(read_picture(folder.file("a.raw"), 1, 2, 2).pixels(),
            (std::vector<int>{'a', 'b', 'c', 'd'}));
}

TEST(ReadImage, TellsWhereARawFileEnds) {
  const temp_folder folder;
  write_file(folder.file("11"), std::string(11, 'x'));
  write_file(folder.file("4"), std::string(4, 'x'));
  write_file(folder.file("0"), "");
  const read_picture last(folder.file("11"), 1, 4, 3);
  EXPECT_EQ(last.result, code::content_malformed);
  EXPECT_EQ(last.printed, "File read ended too early (j=2, i=3, filetype=1)\n");
  const read_picture row(folder.file("4"), 4, 4, 3);
  EXPECT_EQ(row.result, code::content_malformed);
  EXPECT_EQ(row.printed, "File read ended too early (j=1, i=0, filetype=4)\n");
  const read_picture empty(folder.file("0"), 2, 4, 3);
  EXPECT_EQ(empty.result, code::content_malformed);
  EXPECT_EQ(empty.printed, "File read ended too early (j=0, i=0, filetype=2)\n");
}

TEST(ReadImage, ARawPixelOfTwoBytesIsWholeOrNotThere) {
  const temp_folder folder;
  write_file(folder.file("11"), std::string(11, 'x'));
  const read_picture got(folder.file("11"), 8, 3, 2);
  EXPECT_EQ(got.result, code::content_malformed);
  EXPECT_EQ(got.printed, "File read ended too early (j=1, i=2, filetype=8)\n");
}

TEST(ReadImage, RefusesAnUnknownFiletype) {
  const temp_folder folder;
  write_file(folder.file("a.raw"), "");
  for (const int filetype : {9, -1}) {
    const read_picture got(folder.file("a.raw"), filetype, 4, 3);
    EXPECT_EQ(got.result, code::argument_invalid);
    EXPECT_EQ(got.printed, "Filetype " + std::to_string(filetype) + " not recognised\n");
  }
}

TEST(ReadImage, TellsOfAMissingRawFileBeforeItsFiletype) {
  for (const int filetype : {1, 8, 9, -1}) {
    const read_picture got("no such file", filetype, 4, 3);
    EXPECT_EQ(got.result, code::content_malformed);
    EXPECT_EQ(got.printed, "Error opening file no such file\n");
  }
}

TEST(ReadImage, CantOpenAFolderAsARawFile) {
  const temp_folder folder;
  const std::string name = folder.path().string();
  const read_picture got(name, 1, 4, 3);
  EXPECT_EQ(got.result, code::content_malformed);
  EXPECT_EQ(got.printed, "Error opening file " + name + "\n");
}

}  // namespace
}  // namespace ocpan

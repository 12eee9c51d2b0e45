#include "tools/boards/jpeg_end.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

namespace ocpan {
namespace {

// A JPEG of noise, some kilobytes of coded data.
std::string jpeg() {
  cv::Mat picture(48, 64, CV_8UC1);
  cv::RNG noise(7);
  noise.fill(picture, cv::RNG::UNIFORM, 0, 256);
  std::vector<unsigned char> bytes;
  EXPECT_TRUE(cv::imencode(".jpg", picture, bytes));
  return {bytes.begin(), bytes.end()};
}

// The picture with a thumbnail, itself a whole JPEG, in a segment ahead of its own data.
std::string with_thumbnail(const std::string& picture) {
  const std::string thumbnail = jpeg();
  const std::size_t length = thumbnail.size() + 2;
  std::string segment = "\xFF\xE1";
  segment += static_cast<char>(length >> 8);
  segment += static_cast<char>(length & 255);
  return picture.substr(0, 2) + segment + thumbnail + picture.substr(2);
}

TEST(JpegEnd, AWholePictureIsNotCut) { EXPECT_FALSE(is_jpeg_cut_short(jpeg())); }

TEST(JpegEnd, EveryBeginningOfAPictureIsCut) {
  const std::string whole = jpeg();
  ASSERT_GT(whole.size(), 1000u);
  for (std::size_t size = 2; size < whole.size(); ++size) {
    ASSERT_TRUE(is_jpeg_cut_short(whole.substr(0, size))) << size;
  }
}

TEST(JpegEnd, BytesBehindTheEndMarkerDoNotMatter) {
  EXPECT_FALSE(is_jpeg_cut_short(jpeg() + std::string(20, '\0')));
}

TEST(JpegEnd, TheEndOfAThumbnailIsNotThePicturesEnd) {
  const std::string whole = with_thumbnail(jpeg());
  EXPECT_FALSE(is_jpeg_cut_short(whole));
  EXPECT_TRUE(is_jpeg_cut_short(whole.substr(0, whole.size() - 2)));
}

TEST(JpegEnd, WhatIsNoJpegIsNotCut) {
  EXPECT_FALSE(is_jpeg_cut_short(""));
  EXPECT_FALSE(is_jpeg_cut_short("\xFF"));
  EXPECT_FALSE(is_jpeg_cut_short("\x89PNG"));
}

}  // namespace
}  // namespace ocpan

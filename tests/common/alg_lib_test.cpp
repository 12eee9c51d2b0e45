#include "common/alg_lib.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::temp_folder;

constexpr std::uint32_t width = 7;
constexpr std::uint32_t height = 5;

// What a 7 x 5 picture of each format must have.
struct expectation {
  std::uint32_t format;
  std::uint32_t chroma_width;
  std::uint32_t chroma_height;
  std::uint32_t chroma_samples;  // of one plane in memory
  bool alpha;
};
constexpr expectation expectations[] = {
    {13, 4, 5, 20, true},  {14, 7, 5, 35, true},  {15, 4, 5, 20, false}, {16, 4, 3, 12, false},
    {17, 7, 5, 35, false}, {18, 4, 5, 20, false}, {19, 4, 3, 12, false}, {20, 7, 5, 35, false},
    {21, 7, 5, 35, false}, {22, 7, 5, 35, false}, {23, 0, 0, 0, false},  {24, 0, 0, 0, false},
};
constexpr std::size_t luma_samples = 35;

// A picture whose block is freed with it.
struct owned_picture : YUV_PICTURE {
  owned_picture() : YUV_PICTURE{} {}
  ~owned_picture() { std::free(pVirAddr[A_INDEX]); }
  owned_picture(const owned_picture&) = delete;
  owned_picture& operator=(const owned_picture&) = delete;
};

void init(owned_picture& picture, std::uint32_t format, std::uint32_t depth) {
  ASSERT_EQ(ALG_LIB_InitYuvMemEx(&picture, width, height, static_cast<PIXEL_FORMAT>(format), depth),
            0);
}

// The bytes that the writer gives for a picture, and its result.
struct written {
  int result;
  std::string bytes;
};
written write(const YUV_PICTURE& picture, std::uint32_t depth) {
  const temp_folder folder;
  const std::string name = folder.file("out.yuv");
  std::FILE* out = std::fopen(name.c_str(), "wb");
  const int result = ALG_LIB_WriteOneFrameEx(&picture, depth, out);
  std::fclose(out);
  return {result, read_file(name)};
}

TEST(AlgLib, NamesTheFirstAndLastFormat) {
  EXPECT_EQ(PIXEL_FORMAT_YUV_A422, 13u);
  EXPECT_EQ(PIXEL_FORMAT_YUV_SEMIPLANAR_400, 24u);
  EXPECT_EQ(Y_INDEX, 0);
}

TEST(GetChromWH, HalvesRoundedUpByFormat) {
  int checked = 0;
  for (const expectation& expected : expectations) {
    YUV_PICTURE picture{};
    picture.enPixelFormat = static_cast<PIXEL_FORMAT>(expected.format);
    picture.u32Width = width;
    picture.u32Height = height;
    std::uint32_t w = 99;
    std::uint32_t h = 99;
    EXPECT_EQ(ALG_LIB_GetChromWH(&picture, &w, &h), 0);
    EXPECT_EQ(w, expected.chroma_width) << expected.format;
    EXPECT_EQ(h, expected.chroma_height) << expected.format;
    ++checked;
  }
  EXPECT_EQ(checked, 12);
}

TEST(GetChromWH, HalvesTheLargestSizeWithoutOverflow) {
  YUV_PICTURE picture{};
  picture.enPixelFormat = PIXEL_FORMAT_YUV_420;
  picture.u32Width = 0xFFFFFFFF;
  picture.u32Height = 0xFFFFFFFE;
  std::uint32_t w = 0;
  std::uint32_t h = 0;
  ALG_LIB_GetChromWH(&picture, &w, &h);
  EXPECT_EQ(w, 0x80000000u);
  EXPECT_EQ(h, 0x7FFFFFFFu);
}

TEST(InitYuvMemEx, SetsUpTheRecord) {
  owned_picture picture;
  picture.u16TopMargin = 3;
  picture.u16BottomMargin = 3;
  picture.u16LeftMargin = 3;
  picture.u16RightMargin = 3;
  init(picture, 16, 10);
  EXPECT_EQ(picture.enPixelFormat, PIXEL_FORMAT_YUV_420);
  EXPECT_EQ(picture.u32Width, width);
  EXPECT_EQ(picture.u32Height, height);
  EXPECT_EQ(picture.u32BitDepth, 10u);
  EXPECT_EQ(picture.u32PlaneCount, 4u);
  EXPECT_EQ(picture.u32ShiftFlag, 1u);
  EXPECT_EQ(picture.u16TopMargin, 0);
  EXPECT_EQ(picture.u16BottomMargin, 0);
  EXPECT_EQ(picture.u16LeftMargin, 0);
  EXPECT_EQ(picture.u16RightMargin, 0);
}

TEST(InitYuvMemEx, GivesEachFormatItsStrides) {
  int checked = 0;
  for (const expectation& expected : expectations) {
    owned_picture picture;
    init(picture, expected.format, 8);
    EXPECT_EQ(picture.u32Stride[Y_INDEX], width);
    EXPECT_EQ(picture.u32Stride[A_INDEX], width);
    EXPECT_EQ(picture.u32Stride[U_INDEX], expected.chroma_width) << expected.format;
    EXPECT_EQ(picture.u32Stride[V_INDEX], expected.chroma_width) << expected.format;
    ++checked;
  }
  EXPECT_EQ(checked, 12);
}

TEST(InitYuvMemEx, LaysOutThePlanesOfEachFormatAndDepth) {
  const struct {
    std::uint32_t depth;
    std::size_t bytes;
  } sizes[] = {{1, 1}, {8, 1}, {9, 2}, {10, 2}, {16, 2}, {17, 4}, {32, 4}, {33, 8}, {64, 8}};
  int checked = 0;
  for (const expectation& expected : expectations) {
    for (const auto& [depth, bytes] : sizes) {
      owned_picture picture;
      init(picture, expected.format, depth);
      std::uint8_t* const block = picture.pVirAddr[A_INDEX];
      ASSERT_NE(block, nullptr);
      // The whole block is ours to write, as a sanitizer checks.
      std::memset(block, 1, 2 * (luma_samples + expected.chroma_samples) * bytes);
      EXPECT_EQ(picture.pVirAddr[Y_INDEX], block + luma_samples * bytes);
      if (expected.chroma_samples > 0) {
        EXPECT_EQ(picture.pVirAddr[U_INDEX], block + 2 * luma_samples * bytes);
        EXPECT_EQ(picture.pVirAddr[V_INDEX],
                  block + (2 * luma_samples + expected.chroma_samples) * bytes);
      } else {
        EXPECT_EQ(picture.pVirAddr[U_INDEX], nullptr);
        EXPECT_EQ(picture.pVirAddr[V_INDEX], nullptr);
      }
      ++checked;
    }
  }
  EXPECT_EQ(checked, 12 * 9);
}

TEST(InitYuvMemEx, FailsWithTheTraceWhenMemoryIsMissing) {
  YUV_PICTURE picture{};
  int result = 0;
  const std::string text = printed_by([&] {
    result = ALG_LIB_InitYuvMemEx(&picture, 0xFFFFFFFF, 0xFFFFFFFF, PIXEL_FORMAT_YUV_444, 64);
  });
  EXPECT_EQ(result, -1);
  const std::string start =
      "can't get A memory\n  >File name: alg_lib\n  >Function : ALG_LIB_GetYuvMem\n"
      "  >Line No. : ";
  ASSERT_EQ(text.substr(0, start.size()), start);
  const std::string line = text.substr(start.size());
  EXPECT_GT(std::atoi(line.c_str()), 0);
  EXPECT_EQ(line.find_first_not_of("0123456789"), line.size() - 1);
  EXPECT_EQ(line.back(), '\n');
  for (int plane = 0; plane < 4; ++plane) EXPECT_EQ(picture.pVirAddr[plane], nullptr);
}

TEST(InitYuvMemEx, FailsBeyondTheAddressSpaceWithoutOverflow) {
  // 2 * 2^62 samples of 2 bytes: 2^64 bytes, which must not wrap to none.
  YUV_PICTURE picture{};
  int result = 0;
  printed_by([&] {
    result = ALG_LIB_InitYuvMemEx(&picture, 0x80000000, 0x80000000, PIXEL_FORMAT_YUV_400, 16);
  });
  EXPECT_EQ(result, -1);
}

TEST(InitYuvMemEx, TakesAnEmptyPicture) {
  owned_picture picture;
  EXPECT_EQ(ALG_LIB_InitYuvMemEx(&picture, 0, 0, PIXEL_FORMAT_YUV_420, 8), 0);
  EXPECT_NE(picture.pVirAddr[Y_INDEX], nullptr);
  const written file = write(picture, 8);
  EXPECT_EQ(file.result, 0);
  EXPECT_TRUE(file.bytes.empty());
}

TEST(GetYuvMem, CountsTheMargins) {
  owned_picture picture;
  init(picture, 16, 16);
  picture.u16TopMargin = 1;
  picture.u16BottomMargin = 2;
  picture.u32Stride[Y_INDEX] = 11;
  picture.u32Stride[U_INDEX] = 6;
  ASSERT_EQ(ALG_LIB_GetYuvMem(&picture), 0);
  // 11 * (5 + 3) luminance samples; 6 * (3 + 3) of each chroma plane.
  std::uint8_t* const block = picture.pVirAddr[A_INDEX];
  std::memset(block, 1, 2 * (88 + 36) * 2);
  EXPECT_EQ(picture.pVirAddr[Y_INDEX], block + 88 * 2);
  EXPECT_EQ(picture.pVirAddr[U_INDEX], block + 2 * 88 * 2);
  EXPECT_EQ(picture.pVirAddr[V_INDEX], block + (2 * 88 + 36) * 2);
}

TEST(GetYuvMem, CountsTheMarginsOfFullHeightChroma) {
  owned_picture picture;
  init(picture, 15, 8);
  picture.u16TopMargin = 2;
  picture.u16BottomMargin = 1;
  ASSERT_EQ(ALG_LIB_GetYuvMem(&picture), 0);
  // 7 * 8 luminance samples; 4 * 8 of each chroma plane.
  EXPECT_EQ(picture.pVirAddr[V_INDEX] - picture.pVirAddr[U_INDEX], 32);
}

// Fills each plane of a 7 x 5 picture with counting samples from its own start value.
void fill(owned_picture& picture, const expectation& expected) {
  for (std::size_t i = 0; i < luma_samples; ++i) {
    picture.pVirAddr[A_INDEX][i] = static_cast<std::uint8_t>(i);
    picture.pVirAddr[Y_INDEX][i] = static_cast<std::uint8_t>(50 + i);
  }
  for (std::size_t i = 0; i < expected.chroma_samples; ++i) {
    picture.pVirAddr[U_INDEX][i] = static_cast<std::uint8_t>(100 + i);
    picture.pVirAddr[V_INDEX][i] = static_cast<std::uint8_t>(150 + i);
  }
}

void append_counting(std::string& bytes, int start, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    bytes.push_back(static_cast<char>(static_cast<std::size_t>(start) + i));
  }
}

TEST(WriteOneFrameEx, WritesThePlanesOfEachFormatInOrder) {
  int checked = 0;
  for (const expectation& expected : expectations) {
    owned_picture picture;
    init(picture, expected.format, 8);
    fill(picture, expected);
    std::string bytes;
    if (expected.alpha) append_counting(bytes, 0, luma_samples);
    append_counting(bytes, 50, luma_samples);
    append_counting(bytes, 100, expected.chroma_samples);
    append_counting(bytes, 150, expected.chroma_samples);
    const written file = write(picture, 8);
    EXPECT_EQ(file.result, 0);
    EXPECT_EQ(file.bytes, bytes) << expected.format;
    ++checked;
  }
  EXPECT_EQ(checked, 12);
}

TEST(WriteOneFrameEx, ConvertsToTheOutputDepth) {
  owned_picture picture;
  init(picture, 23, 8);
  fill(picture, expectations[10]);
  const written file = write(picture, 10);
  EXPECT_EQ(file.result, 0);
  ASSERT_EQ(file.bytes.size(), luma_samples * 2);
  // 51 << 2 = 204; 84 << 2 = 336 = 0x150.
  EXPECT_EQ(file.bytes.substr(2, 2), std::string("\xCC\x00", 2));
  EXPECT_EQ(file.bytes.substr(68, 2), std::string("\x50\x01", 2));
}

TEST(WriteOneFrameEx, LeavesOutTheMargins) {
  owned_picture picture;
  init(picture, 16, 8);
  picture.u32Width = 3;
  picture.u32Height = 2;
  picture.u16TopMargin = 1;
  picture.u16BottomMargin = 2;
  picture.u16LeftMargin = 1;
  picture.u16RightMargin = 3;
  picture.u32Stride[Y_INDEX] = picture.u32Stride[A_INDEX] = 7;
  picture.u32Stride[U_INDEX] = picture.u32Stride[V_INDEX] = 4;
  ASSERT_EQ(ALG_LIB_GetYuvMem(&picture), 0);
  for (std::uint8_t i = 0; i < 35; ++i) picture.pVirAddr[Y_INDEX][i] = i;
  for (std::uint8_t i = 0; i < 16; ++i) {
    picture.pVirAddr[U_INDEX][i] = static_cast<std::uint8_t>(100 + i);
    picture.pVirAddr[V_INDEX][i] = static_cast<std::uint8_t>(150 + i);
  }
  // Y from sample 7 * 1 + 1, two rows of 3; U and V from 4 * 1 + 1, one row of 2.
  const unsigned char expected[] = {8, 9, 10, 15, 16, 17, 105, 106, 155, 156};
  const written file = write(picture, 8);
  EXPECT_EQ(file.result, 0);
  EXPECT_EQ(file.bytes, std::string(reinterpret_cast<const char*>(expected), sizeof expected));
}

TEST(WriteOneFrameEx, FailsWhenARowIsNotWritten) {
  const temp_folder folder;
  const std::string name = folder.file("in.yuv");
  testing::write_file(name, "x");
  int checked = 0;
  for (std::uint32_t format : {13u, 23u}) {
    owned_picture picture;
    init(picture, format, 8);
    std::FILE* read_only = std::fopen(name.c_str(), "rb");
    EXPECT_EQ(ALG_LIB_WriteOneFrameEx(&picture, 8, read_only), -1);
    std::fclose(read_only);
    ++checked;
  }
  EXPECT_EQ(checked, 2);
  EXPECT_EQ(read_file(name), "x");
}

TEST(WriteOneFrameEx, FailsForDepthsThatNoSampleHas) {
  owned_picture picture;
  init(picture, 23, 8);
  int checked = 0;
  for (std::uint32_t depth : {0u, 65u, 0xFFFFFFFFu}) {
    EXPECT_EQ(write(picture, depth).result, -1) << depth;
    ++checked;
  }
  EXPECT_EQ(checked, 3);
}

TEST(WriteOneFrameEx, FailsWithoutAChromaPlane) {
  owned_picture picture;
  init(picture, 23, 8);
  picture.enPixelFormat = PIXEL_FORMAT_YUV_444;
  EXPECT_EQ(write(picture, 8).result, -1);
}

}  // namespace
}  // namespace ocpan

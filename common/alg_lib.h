#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

// Raw YUV pictures in planes: description, memory, sample conversion and writing.
//
// Every function that takes a picture asserts its arguments. A failed assertion prints
// itself on the C library's standard output and ends the process with exit code -1.
// All state is in the arguments; calls on different pictures may run at once.
namespace ocpan {

// The values are given from outside, so the order stays. All are kept and written plane by
// plane, also those whose chroma samples other programs interleave.
enum PIXEL_FORMAT : std::uint32_t {
  PIXEL_FORMAT_YUV_A422 = 13,  // A: with an alpha plane
  PIXEL_FORMAT_YUV_A444 = 14,
  PIXEL_FORMAT_YUV_422 = 15,
  PIXEL_FORMAT_YUV_420 = 16,
  PIXEL_FORMAT_YUV_444 = 17,
  PIXEL_FORMAT_YUV_SEMIPLANAR_422 = 18,
  PIXEL_FORMAT_YUV_SEMIPLANAR_420 = 19,
  PIXEL_FORMAT_YUV_SEMIPLANAR_444 = 20,
  PIXEL_FORMAT_YUV_INTERLEAVED_444 = 21,
  PIXEL_FORMAT_YUV_PACKED_444 = 22,
  PIXEL_FORMAT_YUV_400 = 23,
  PIXEL_FORMAT_YUV_SEMIPLANAR_400 = 24
};

// Indices of a picture's planes.
inline constexpr int Y_INDEX = 0;
inline constexpr int U_INDEX = 1;
inline constexpr int V_INDEX = 2;
inline constexpr int A_INDEX = 3;

// A picture and its planes. The planes lie in one block of malloc at
// pVirAddr[A_INDEX], which the owner of the record frees.
struct YUV_PICTURE {
  PIXEL_FORMAT enPixelFormat;
  std::uint32_t u32Width;     // luminance samples per row, margins apart
  std::uint32_t u32Height;    // luminance rows, margins apart
  std::uint32_t u32BitDepth;  // bits per sample in memory
  std::uint32_t u32PlaneCount;
  std::uint8_t* pVirAddr[4];
  std::uint32_t u32Stride[4];  // samples
  std::uint16_t u16TopMargin;  // rows above each plane's picture
  std::uint16_t u16BottomMargin;
  std::uint16_t u16LeftMargin;  // samples left of each plane's picture
  std::uint16_t u16RightMargin;
  std::uint32_t u32ShiftFlag;  // 1: the writer shifts samples from depth to depth
};

// Gives the size of a chroma plane, 0 by 0 if the format has none. Returns 0.
int ALG_LIB_GetChromWH(const YUV_PICTURE* pstPic, std::uint32_t* pu32W, std::uint32_t* pu32H);

// Frees the block at pVirAddr[A_INDEX], if any, and allocates the planes for the record's
// format, height, depth, strides and margins. The samples are left undefined, and U and V
// null where there is no chroma. Returns 0, or -1 with all planes null.
[[nodiscard]] int ALG_LIB_GetYuvMem(YUV_PICTURE* pstPic);

// Sets up a record without margins and allocates its planes. Whatever the record held
// before is overwritten, not freed. Returns 0 or -1, as ALG_LIB_GetYuvMem.
[[nodiscard]] int ALG_LIB_InitYuvMemEx(YUV_PICTURE* pstPic, std::uint32_t u32Width,
                                       std::uint32_t u32Height, PIXEL_FORMAT enPixelFormat,
                                       std::uint32_t u32BitDepth);

// Writes a picture without its margins: alpha where the format has it, Y, U, V.
//
//   pstPic            each plane holds its rows at its stride, behind the margins
//   u32OutputBitDepth 1 to 64, as the picture's own; decides the size of a written sample
//   pfOut             open for binary writing; neither flushed nor closed
//
// Returns 0, or -1 when a row can't be written, memory is missing or a depth is out of range.
[[nodiscard]] int ALG_LIB_WriteOneFrameEx(const YUV_PICTURE* pstPic,
                                          std::uint32_t u32OutputBitDepth, std::FILE* pfOut);

// Converts samples between two depths. A sample of up to 8, 16, 32 or 64 bits takes 1, 2,
// 4 or 8 bytes, in the machine's byte order.
//
//   pDst, pSrc        u32Count samples each, aligned to their size
//   u32ShiftFlag      1: shift by the difference of the depths; otherwise values stay
//
// A wider sample is shifted left. A narrower one is shifted right and held to the largest
// value of its bytes (255 in one byte). A sample of the same size is shifted towards the
// destination's depth, and bits beyond its bytes are lost. Returns 0, or -1 with nothing
// done if a depth isn't 1 to 64.
[[nodiscard]] int ALG_LIB_ConvertSamples(void* pDst, const void* pSrc, std::uint32_t u32DstBits,
                                         std::uint32_t u32SrcBits, std::uint32_t u32Count,
                                         std::uint32_t u32ShiftFlag);

// Prints a complaint and where it comes from on the C library's standard output, flushed.
//
//   message   printed as it stands, in front of the trace
//   file      name of the source, without folder and ending
void ALG_LIB_PrintTrace(const char* message, const char* file, const char* function, int line);

}  // namespace ocpan

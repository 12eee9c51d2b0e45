#include "common/alg_lib.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <limits>
#include <memory>

namespace ocpan {
namespace {

static_assert(std::endian::native == std::endian::little,
              "planes are written as they lie in memory, and the files are little-endian");

constexpr char source_name[] = "alg_lib";

// Ends the process if the condition of an argument doesn't hold.
void require(bool holds, const char* condition, const char* function, int line = __builtin_LINE()) {
  if (holds) return;
  std::printf(
      "\nASSERT failed at:\n  >File name: %s\n  >Function : %s\n  >Line No. : %d\n"
      "  >Condition: %s\n",
      source_name, function, line, condition);
  std::fflush(stdout);
  std::exit(-1);
}

std::uint32_t half_rounded_up(std::uint32_t x) { return x / 2 + x % 2; }

bool has_alpha(PIXEL_FORMAT format) {
  return format == PIXEL_FORMAT_YUV_A422 || format == PIXEL_FORMAT_YUV_A444;
}

bool has_half_chroma_rows(PIXEL_FORMAT format) {
  return format == PIXEL_FORMAT_YUV_420 || format == PIXEL_FORMAT_YUV_SEMIPLANAR_420;
}

bool has_half_chroma_columns(PIXEL_FORMAT format) {
  return format == PIXEL_FORMAT_YUV_A422 || format == PIXEL_FORMAT_YUV_422 ||
         format == PIXEL_FORMAT_YUV_SEMIPLANAR_422 || has_half_chroma_rows(format);
}

bool has_chroma(PIXEL_FORMAT format) {
  return format != PIXEL_FORMAT_YUV_400 && format != PIXEL_FORMAT_YUV_SEMIPLANAR_400;
}

// Bytes of a sample: the least power of two that holds its bits.
std::uint64_t sample_bytes(std::uint32_t bit_depth) {
  std::uint64_t bytes = 1;
  while (bytes * 8 < bit_depth) bytes *= 2;
  return bytes;
}

// Sizes that don't fit stay at the largest number, which no block has.
constexpr std::uint64_t unreachable_size = std::numeric_limits<std::uint64_t>::max();

std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  return a != 0 && b > unreachable_size / a ? unreachable_size : a * b;
}

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
  return b > unreachable_size - a ? unreachable_size : a + b;
}

std::uint8_t* allocate(std::uint64_t bytes) {
  if (bytes > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max())) {
    return nullptr;
  }
  // One byte for an empty picture: the block of no bytes may be null.
  return static_cast<std::uint8_t*>(std::malloc(std::max<std::size_t>(bytes, 1)));
}

struct free_block {
  void operator()(void* block) const { std::free(block); }
};

template <typename Destination, typename Source>
void convert(void* destination, const void* source, std::uint32_t count, bool left,
             unsigned shift) {
  constexpr bool narrower = sizeof(Destination) < sizeof(Source);
  using wide = std::conditional_t<(std::max(sizeof(Destination), sizeof(Source)) > 4),
                                  std::uint64_t, std::uint32_t>;
  auto* to = static_cast<Destination*>(destination);
  const auto* from = static_cast<const Source*>(source);
  if (left) {
    for (std::uint32_t i = 0; i < count; ++i) {
      to[i] = static_cast<Destination>(static_cast<wide>(from[i]) << shift);
    }
    return;
  }
  constexpr wide largest =
      narrower ? std::numeric_limits<Destination>::max() : std::numeric_limits<wide>::max();
  for (std::uint32_t i = 0; i < count; ++i) {
    to[i] = static_cast<Destination>(std::min<wide>(static_cast<wide>(from[i]) >> shift, largest));
  }
}

// Calls with a value of the unsigned type of 1, 2, 4 or 8 bytes.
template <typename Call>
void with_sample_type(std::uint64_t bytes, Call&& call) {
  if (bytes == 1) {
    call(std::uint8_t{});
  } else if (bytes == 2) {
    call(std::uint16_t{});
  } else if (bytes == 4) {
    call(std::uint32_t{});
  } else {
    call(std::uint64_t{});
  }
}

// Writes one plane behind its margins through the row buffer. Returns 0 or -1.
int write_plane(const YUV_PICTURE& picture, int plane, std::uint32_t width, std::uint32_t height,
                std::uint32_t output_depth, void* row_buffer, std::FILE* out) {
  if (!picture.pVirAddr[plane]) return -1;
  const std::uint64_t bytes = sample_bytes(picture.u32BitDepth);
  const std::uint64_t stride = picture.u32Stride[plane];
  const std::uint8_t* row =
      picture.pVirAddr[plane] + (stride * picture.u16TopMargin + picture.u16LeftMargin) * bytes;
  const std::size_t output_bytes = sample_bytes(output_depth);
  for (std::uint32_t i = 0; i < height; ++i, row += stride * bytes) {
    if (ALG_LIB_ConvertSamples(row_buffer, row, output_depth, picture.u32BitDepth, width,
                               picture.u32ShiftFlag) != 0) {
      return -1;
    }
    if (std::fwrite(row_buffer, output_bytes, width, out) != width) return -1;
  }
  return 0;
}

}  // namespace

int ALG_LIB_GetChromWH(const YUV_PICTURE* pstPic, std::uint32_t* pu32W, std::uint32_t* pu32H) {
  require(pstPic != nullptr, "pstPic != 0L", __func__);
  require(pu32W != nullptr, "pu32W != 0L", __func__);
  require(pu32H != nullptr, "pu32H != 0L", __func__);
  const PIXEL_FORMAT format = pstPic->enPixelFormat;
  *pu32W = *pu32H = 0;
  if (!has_chroma(format)) return 0;
  *pu32W = has_half_chroma_columns(format) ? half_rounded_up(pstPic->u32Width) : pstPic->u32Width;
  *pu32H = has_half_chroma_rows(format) ? half_rounded_up(pstPic->u32Height) : pstPic->u32Height;
  return 0;
}

int ALG_LIB_GetYuvMem(YUV_PICTURE* pstPic) {
  require(pstPic != nullptr, "pstPic != 0L", __func__);
  std::free(pstPic->pVirAddr[A_INDEX]);
  std::fill(std::begin(pstPic->pVirAddr), std::end(pstPic->pVirAddr), nullptr);

  const std::uint64_t bytes = sample_bytes(pstPic->u32BitDepth);
  const std::uint64_t margins = std::uint64_t{pstPic->u16TopMargin} + pstPic->u16BottomMargin;
  const std::uint64_t rows = pstPic->u32Height + margins;
  const std::uint64_t luminance = product(pstPic->u32Stride[Y_INDEX], rows);
  std::uint64_t chroma = 0;
  if (has_chroma(pstPic->enPixelFormat)) {
    const bool half = has_half_chroma_rows(pstPic->enPixelFormat);
    chroma = product(pstPic->u32Stride[U_INDEX],
                     half ? half_rounded_up(pstPic->u32Height) + margins : rows);
  }

  // Alpha has room in every format.
  std::uint8_t* block = allocate(product(2 * bytes, sum(luminance, chroma)));
  const struct {
    int plane;
    std::uint64_t offset;  // samples
    const char* complaint;
  } planes[] = {{A_INDEX, 0, "can't get A memory"},
                {Y_INDEX, luminance, "can't get Y memory"},
                {U_INDEX, 2 * luminance, "can't get U memory"},
                {V_INDEX, 2 * luminance + chroma, "can't get V memory"}};
  for (const auto& [plane, offset, complaint] : planes) {
    if (chroma == 0 && (plane == U_INDEX || plane == V_INDEX)) continue;
    pstPic->pVirAddr[plane] = block ? block + offset * bytes : nullptr;
    if (pstPic->pVirAddr[plane]) continue;
    ALG_LIB_PrintTrace(complaint, source_name, __func__, __LINE__);
    std::free(block);
    std::fill(std::begin(pstPic->pVirAddr), std::end(pstPic->pVirAddr), nullptr);
    return -1;
  }
  return 0;
}

int ALG_LIB_InitYuvMemEx(YUV_PICTURE* pstPic, std::uint32_t u32Width, std::uint32_t u32Height,
                         PIXEL_FORMAT enPixelFormat, std::uint32_t u32BitDepth) {
  require(pstPic != nullptr, "pstPic != 0L", __func__);
  require(
      enPixelFormat >= PIXEL_FORMAT_YUV_A422 && enPixelFormat <= PIXEL_FORMAT_YUV_SEMIPLANAR_400,
      "enPixelFormat >= PIXEL_FORMAT_YUV_A422 &&enPixelFormat <= PIXEL_FORMAT_YUV_SEMIPLANAR_400",
      __func__);
  *pstPic = {};
  pstPic->enPixelFormat = enPixelFormat;
  pstPic->u32Width = u32Width;
  pstPic->u32Height = u32Height;
  pstPic->u32BitDepth = u32BitDepth;
  pstPic->u32PlaneCount = 4;
  pstPic->u32ShiftFlag = 1;

  std::uint32_t chroma_width = 0;
  std::uint32_t chroma_height = 0;
  ALG_LIB_GetChromWH(pstPic, &chroma_width, &chroma_height);
  const std::uint32_t half_margins = (pstPic->u16LeftMargin + pstPic->u16RightMargin) / 2u;
  pstPic->u32Stride[Y_INDEX] = pstPic->u32Stride[A_INDEX] = u32Width;
  pstPic->u32Stride[U_INDEX] = pstPic->u32Stride[V_INDEX] = chroma_width + half_margins;
  return ALG_LIB_GetYuvMem(pstPic);
}

int ALG_LIB_WriteOneFrameEx(const YUV_PICTURE* pstPic, std::uint32_t u32OutputBitDepth,
                            std::FILE* pfOut) {
  require(pfOut != nullptr, "pfOut != 0L", __func__);
  require(pstPic != nullptr, "pstPic != 0L", __func__);
  require(pstPic->pVirAddr[Y_INDEX] != nullptr, "pstPic->pVirAddr[Y_INDEX] != 0L", __func__);

  const std::uint32_t width = pstPic->u32Width;
  const std::uint32_t height = pstPic->u32Height;
  const std::unique_ptr<void, free_block> row(
      allocate(product(sample_bytes(u32OutputBitDepth), width)));
  if (!row) return -1;
  const auto write = [&](int plane, std::uint32_t columns, std::uint32_t rows) {
    return write_plane(*pstPic, plane, columns, rows, u32OutputBitDepth, row.get(), pfOut);
  };

  if (has_alpha(pstPic->enPixelFormat) && write(A_INDEX, width, height) != 0) return -1;
  if (write(Y_INDEX, width, height) != 0) return -1;
  std::uint32_t chroma_width = 0;
  std::uint32_t chroma_height = 0;
  ALG_LIB_GetChromWH(pstPic, &chroma_width, &chroma_height);
  if (chroma_width == 0 || chroma_height == 0) return 0;
  if (write(U_INDEX, chroma_width, chroma_height) != 0) return -1;
  return write(V_INDEX, chroma_width, chroma_height);
}

int ALG_LIB_ConvertSamples(void* pDst, const void* pSrc, std::uint32_t u32DstBits,
                           std::uint32_t u32SrcBits, std::uint32_t u32Count,
                           std::uint32_t u32ShiftFlag) {
  if (u32DstBits < 1 || u32DstBits > 64 || u32SrcBits < 1 || u32SrcBits > 64) return -1;
  const bool left = u32DstBits > u32SrcBits;
  const std::uint32_t difference = left ? u32DstBits - u32SrcBits : u32SrcBits - u32DstBits;
  const unsigned shift = u32ShiftFlag == 1 ? difference : 0;
  with_sample_type(sample_bytes(u32DstBits), [&](auto to) {
    with_sample_type(sample_bytes(u32SrcBits), [&](auto from) {
      convert<decltype(to), decltype(from)>(pDst, pSrc, u32Count, left, shift);
    });
  });
  return 0;
}

void ALG_LIB_PrintTrace(const char* message, const char* file, const char* function, int line) {
  std::printf("%s\n  >File name: %s\n  >Function : %s\n  >Line No. : %d\n", message, file, function,
              line);
  std::fflush(stdout);
}

}  // namespace ocpan

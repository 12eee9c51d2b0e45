#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "common/alg_lib.h"
#include "fuzz/byte_source.h"
#include "fuzz/promise.h"

// The input describes a conversion of samples, or a picture that is allocated and written.

namespace ocpan::fuzz {
namespace {

std::size_t bytes_of(std::uint32_t bits) {
  return bits <= 8 ? 1 : bits <= 16 ? 2 : bits <= 32 ? 4 : 8;
}

std::uint64_t slow_conversion(std::uint64_t value, std::uint32_t to, std::uint32_t from,
                              std::uint32_t flag) {
  const std::uint32_t shift = flag == 1 ? std::max(to, from) - std::min(to, from) : 0;
  const std::uint64_t largest = ~std::uint64_t{0} >> (64 - 8 * bytes_of(to));
  if (bytes_of(to) < bytes_of(from)) return std::min(value >> shift, largest);
  return (to > from ? value << shift : value >> shift) & largest;
}

std::uint64_t sample(const std::vector<std::uint64_t>& block, std::size_t index,
                     std::uint32_t bits) {
  std::uint64_t value = 0;
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(block.data());
  std::memcpy(&value, bytes + index * bytes_of(bits), bytes_of(bits));
  return value;
}

// Room for so many samples, aligned for each size.
std::vector<std::uint64_t> room(std::size_t bytes) {
  return std::vector<std::uint64_t>(bytes / 8 + 1);
}

void convert_samples(byte_source& source) {
  const std::uint32_t to = static_cast<std::uint32_t>(source.below(67));
  const std::uint32_t from = static_cast<std::uint32_t>(source.below(67));
  const std::uint32_t flag = static_cast<std::uint32_t>(source.below(3));
  const input bytes = source.rest();
  const std::size_t count = bytes.size() / bytes_of(from);
  std::vector<std::uint64_t> samples = room(bytes.size());
  if (!bytes.empty()) std::memcpy(samples.data(), bytes.data(), bytes.size());
  std::vector<std::uint64_t> converted = room(count * bytes_of(to));
  const int result = ALG_LIB_ConvertSamples(converted.data(), samples.data(), to, from,
                                            static_cast<std::uint32_t>(count), flag);
  const bool possible = to >= 1 && to <= 64 && from >= 1 && from <= 64;
  must_hold(result == (possible ? 0 : -1), "depths are checked");
  if (!possible) return;
  for (std::size_t k = 0; k < count; ++k) {
    must_hold(sample(converted, k, to) == slow_conversion(sample(samples, k, from), to, from, flag),
              "a sample is converted");
  }
}

struct free_block {
  void operator()(void* block) const { std::free(block); }
};

void widen(YUV_PICTURE& picture, byte_source& source) {
  picture.u16TopMargin = source.byte() % 4;
  picture.u16BottomMargin = source.byte() % 4;
  picture.u16LeftMargin = source.byte() % 4;
  picture.u16RightMargin = source.byte() % 4;
  for (std::uint32_t& stride : picture.u32Stride) {
    stride += picture.u16LeftMargin + picture.u16RightMargin;
  }
}

// Fills all that belongs to the planes, so that every byte of them is written once.
void fill_planes(const YUV_PICTURE& picture, std::uint8_t value) {
  for (int plane = 0; plane < 4; ++plane) {
    if (!picture.pVirAddr[plane]) continue;
    const bool is_chroma = plane == U_INDEX || plane == V_INDEX;
    std::uint32_t columns = 0;
    std::uint32_t rows = picture.u32Height;
    if (is_chroma) ALG_LIB_GetChromWH(&picture, &columns, &rows);
    const std::size_t all_rows = std::size_t{rows} + picture.u16TopMargin + picture.u16BottomMargin;
    std::memset(picture.pVirAddr[plane], value,
                all_rows * picture.u32Stride[plane] * bytes_of(picture.u32BitDepth));
  }
}

// How many samples the writer puts out, all planes together.
std::size_t written_samples(const YUV_PICTURE& picture) {
  const bool has_alpha = picture.enPixelFormat == PIXEL_FORMAT_YUV_A422 ||
                         picture.enPixelFormat == PIXEL_FORMAT_YUV_A444;
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  ALG_LIB_GetChromWH(&picture, &columns, &rows);
  const std::size_t luminance = std::size_t{picture.u32Width} * picture.u32Height;
  return (has_alpha ? 2 : 1) * luminance + 2 * (std::size_t{columns} * rows);
}

void write_picture(byte_source& source) {
  const auto format = static_cast<PIXEL_FORMAT>(PIXEL_FORMAT_YUV_A422 + source.below(12));
  const auto width = static_cast<std::uint32_t>(source.below(20));
  const auto height = static_cast<std::uint32_t>(source.below(20));
  const std::uint32_t depth = 1 + static_cast<std::uint32_t>(source.below(64));
  const auto output_depth = static_cast<std::uint32_t>(source.below(67));
  YUV_PICTURE picture;
  must_hold(ALG_LIB_InitYuvMemEx(&picture, width, height, format, depth) == 0, "there is memory");
  widen(picture, source);
  must_hold(ALG_LIB_GetYuvMem(&picture) == 0, "there is memory for margins");
  const std::unique_ptr<void, free_block> planes(picture.pVirAddr[A_INDEX]);
  const std::uint8_t value = source.byte();
  fill_planes(picture, value);
  picture.u32ShiftFlag = static_cast<std::uint32_t>(source.below(3));

  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const out = open_memstream(&text, &size);
  const int result = ALG_LIB_WriteOneFrameEx(&picture, output_depth, out);
  std::fclose(out);
  const std::unique_ptr<void, free_block> written(text);
  const std::size_t samples = written_samples(picture);
  const bool possible = samples == 0 || (output_depth >= 1 && output_depth <= 64);
  if (width > 0 && height > 0) must_hold(result == (possible ? 0 : -1), "a frame is written");
  if (result == 0) must_hold(size == samples * bytes_of(output_depth), "a frame has its size");
}

}  // namespace

void run_raw_samples(input bytes) {
  byte_source source(bytes);
  if (source.byte() % 2 == 0) {
    convert_samples(source);
  } else {
    write_picture(source);
  }
}

}  // namespace ocpan::fuzz

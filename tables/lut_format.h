#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace ocpan {

// A lookup table file is this many entries, 64 bits each, little-endian, without a header.
inline constexpr std::size_t lut_entry_count = 524288;

// Packs one entry of a lookup table.
//
//   bit  63        37 36        10 9       0
//        +-----------+------------+---------+
//        | x, 1/8192 | y, 1/8192  | weight  |   x, y signed, weight 0 to 1023
//        +-----------+------------+---------+
//
//   x, y     pixels, clamped to -8192 to 8191; not-a-number gives an entry of 0
//   weight   0 to 1023
//
// Half a step is added whatever the sign and the sum truncated, so a negative position
// comes out one step higher than the nearest: the device's tables are made so.
constexpr std::uint64_t pack_lut_entry(double x, double y, int weight) {
  constexpr double steps = 8192.0;  // 2^13 per pixel
  constexpr double least = -8192.0, most = 8191.0;
  if (!(x == x && y == y)) return 0;
  const auto column = static_cast<std::int64_t>(std::clamp(x, least, most) * steps + 0.5);
  const auto row = static_cast<std::int64_t>(std::clamp(y, least, most) * steps + 0.5);
  const std::uint64_t position =
      (static_cast<std::uint64_t>(column) << 27) | (static_cast<std::uint64_t>(row) & 0x7ffffff);
  return (position << 10) | (static_cast<std::uint64_t>(weight) & 0x3ff);
}
static_assert(pack_lut_entry(1.0, 2.0, 3) == ((8192ull << 37) | (16384ull << 10) | 3));
static_assert(pack_lut_entry(0.0, -1.0, 0) == (0x8000000ull - 8191) << 10);

// The index in the file of the entry of sample (a, b) of a face.
//
// The file has two halves, of faces 0 to 2 and of faces 3 to 5. A half has 64 stripes of
// four table rows each; a stripe has four slots, one per face and one of zeros; a slot has
// 32 tiles of eight columns each; a tile holds its four rows one after the other.
constexpr std::size_t lut_index(std::size_t face, std::size_t a, std::size_t b) {
  return (face / 3) * 262144 + (a / 4) * 4096 + (face % 3) * 1024 + (b / 8) * 32 + (a % 4) * 8 +
         b % 8;
}
static_assert(lut_index(0, 0, 7) == 7 && lut_index(0, 1, 0) == 8 && lut_index(0, 0, 8) == 32);
static_assert(lut_index(1, 0, 0) == 1024 && lut_index(0, 4, 0) == 4096);
static_assert(lut_index(3, 0, 0) == 262144);
static_assert(lut_index(5, 255, 255) == lut_entry_count - 1024 - 1);  // then a slot of zeros

}  // namespace ocpan

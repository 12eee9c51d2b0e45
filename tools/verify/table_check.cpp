#include "tools/verify/table_check.h"

#include <algorithm>
#include <cmath>

#include "tables/cube_faces.h"
#include "tables/lut_format.h"

namespace ocpan {
namespace {

constexpr double step = 1.0 / 8192;  // pixels

std::uint64_t entry_of(const point_block& face, std::size_t a, std::size_t b) {
  const auto row = static_cast<Eigen::Index>(b);
  return pack_lut_entry(face[a](row, 0), face[a](row, 1), 0);
}

bool same_position(const lut_entry& one, const lut_entry& other) {
  return std::abs(one.x - other.x) <= step && std::abs(one.y - other.y) <= step;
}

enum class weight_fit { good, other, outside };

// A position within a step of a pixel's border may have had the weight of either pixel, and
// the last bit of a distance may differ between machines.
weight_fit fit_of(const lut_entry& entry, const weight_map& map) {
  bool fits = false, inside = false;
  for (const double x : {entry.x - 1.5 * step, entry.x + 1.5 * step}) {
    for (const double y : {entry.y - 1.5 * step, entry.y + 1.5 * step}) {
      int weight = 0;
      if (x > -1.0 && x < map.distance.cols && y > -1.0 && y < map.distance.rows) {
        weight = weight_at(map, static_cast<int>(y), static_cast<int>(x));
      }
      inside = inside || weight > 0;
      fits = fits || weight == entry.weight || (weight > 0 && std::abs(weight - entry.weight) <= 1);
    }
  }
  if (fits) return weight_fit::good;
  return inside ? weight_fit::other : weight_fit::outside;
}

std::size_t count_filled_slots(const std::vector<std::uint64_t>& entries) {
  std::size_t filled = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (i % 4096 >= 3072 && entries[i] != 0) ++filled;
  }
  return filled;
}

}  // namespace

lut_entry unpack_lut_entry(std::uint64_t entry) {
  const auto x = static_cast<std::int64_t>(entry) >> 37;
  const auto y = static_cast<std::int64_t>(entry << 27) >> 37;
  return {static_cast<double>(x) * step, static_cast<double>(y) * step,
          static_cast<int>(entry & 1023)};
}

table_comparison compare_table(const std::vector<std::uint64_t>& entries,
                               const std::vector<point_block>& positions, const weight_map& map) {
  table_comparison compared;
  compared.filled_slots = count_filled_slots(entries);
  for (std::size_t face = 0; face < positions.size(); ++face) {
    for (std::size_t a = 0; a < cube_samples; ++a) {
      for (std::size_t b = 0; b < cube_samples; ++b) {
        const std::uint64_t stored = entries[lut_index(face, a, b)];
        const std::uint64_t expected = entry_of(positions[face], a, b);
        const lut_entry got = unpack_lut_entry(stored), wanted = unpack_lut_entry(expected);
        if (!same_position(got, wanted)) {
          ++compared.off_positions;
          const double pixels = std::hypot(got.x - wanted.x, got.y - wanted.y);
          if (got.weight > 0) compared.worst_pixels = std::max(compared.worst_pixels, pixels);
        }
        // A direction without a position has an entry of 0, which is no place in the picture.
        if (stored == 0) continue;
        const weight_fit fit = fit_of(got, map);
        if (fit == weight_fit::other) ++compared.other_weights;
        if (fit == weight_fit::outside) ++compared.outside_mask;
      }
    }
  }
  return compared;
}

double part_fitting(const std::vector<std::uint64_t>& entries,
                    const std::vector<point_block>& positions) {
  constexpr std::size_t stride = 5;
  std::size_t count = 0, fitting = 0;
  for (std::size_t face = 0; face < positions.size(); ++face) {
    for (std::size_t a = 0; a < cube_samples; a += stride) {
      for (std::size_t b = 0; b < cube_samples; b += stride) {
        ++count;
        const std::uint64_t expected = entry_of(positions[face], a, b);
        if (same_position(unpack_lut_entry(entries[lut_index(face, a, b)]),
                          unpack_lut_entry(expected))) {
          ++fitting;
        }
      }
    }
  }
  return static_cast<double>(fitting) / static_cast<double>(count);
}

}  // namespace ocpan

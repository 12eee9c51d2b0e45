#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "calfiles/cal.h"
#include "tables/weight_map.h"

namespace ocpan {

// An entry of a lookup table, taken apart.
struct lut_entry {
  double x, y;  // pixels
  int weight;   // 0 to 1023
};
lut_entry unpack_lut_entry(std::uint64_t entry);

// How a table compares with a calibration and a mask, counted over all its samples, those
// beyond the faces too.
struct table_comparison {
  std::size_t filled_slots = 0;   // entries of the slots that must be 0
  std::size_t off_positions = 0;  // more than a step of the format away
  double worst_pixels = 0;        // of those, the farthest among the samples with weight
  std::size_t outside_mask = 0;   // with weight where the mask has none
  std::size_t other_weights = 0;  // with another weight than the mask gives, within it
};

// Compares a table with what belongs into it. Weights are judged at the table's own
// positions, whatever the calibration says.
//
//   entries     as they lie in the file
//   positions   of the camera's calibration, a block per face
//   map         of the camera's mask
table_comparison compare_table(const std::vector<std::uint64_t>& entries,
                               const std::vector<point_block>& positions, const weight_map& map);

// The part of a table's positions that are those of a calibration, 0 to 1, from a few of
// them.
double part_fitting(const std::vector<std::uint64_t>& entries,
                    const std::vector<point_block>& positions);

}  // namespace ocpan

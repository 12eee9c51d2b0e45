#include "tables/lut_format.h"

#include <limits>
#include <set>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

TEST(PackLutEntry, HoldsEachFieldInItsBits) {
  // 3.25 * 8192 = 26624, 0.5 * 8192 = 4096.
  EXPECT_EQ(pack_lut_entry(3.25, 0.5, 1023), (26624ull << 37) | (4096ull << 10) | 1023);
}

TEST(PackLutEntry, NegativePositionIsOneStepHigherThanNearest) {
  // -1 pixel is -8192 steps; adding 0.5 and truncating gives -8191.
  EXPECT_EQ(pack_lut_entry(0.0, -1.0, 0), (0x8000000ull - 8191) << 10);
  EXPECT_EQ(pack_lut_entry(-1.0, 0.0, 0), (0x8000000ull - 8191) << 37);
}

TEST(PackLutEntry, RoundsPositivePositionsToTheNearestStep) {
  EXPECT_EQ(pack_lut_entry(0.0, 1.4 / 8192, 0), 1ull << 10);
  EXPECT_EQ(pack_lut_entry(0.0, 1.5 / 8192, 0), 2ull << 10);
}

TEST(PackLutEntry, ClampsPositions) {
  const auto entry = [](std::int64_t column, std::int64_t row) {
    return (static_cast<std::uint64_t>(column) << 37) |
           ((static_cast<std::uint64_t>(row) & 0x7ffffff) << 10);
  };
  const std::int64_t most = 8191 * 8192, least = -8192 * 8192 + 1;
  EXPECT_EQ(pack_lut_entry(9000.0, -9000.0, 0), entry(most, least));
  EXPECT_EQ(pack_lut_entry(8191.5, 1e300, 0), entry(most, most));
  EXPECT_EQ(pack_lut_entry(infinite, -infinite, 0), entry(most, least));
}

TEST(PackLutEntry, PositionThatIsNoNumberGivesZero) {
  EXPECT_EQ(pack_lut_entry(not_a_number, 5.0, 7), 0u);
  EXPECT_EQ(pack_lut_entry(5.0, not_a_number, 7), 0u);
}

TEST(LutIndex, GivesEachSampleAPlaceOutsideTheSlotsOfZeros) {
  std::set<std::size_t> places;
  for (std::size_t face = 0; face < 6; ++face) {
    for (std::size_t a = 0; a < 256; ++a) {
      for (std::size_t b = 0; b < 256; b += 5) {
        const std::size_t place = lut_index(face, a, b);
        EXPECT_LT(place, lut_entry_count);
        EXPECT_LT(place % 4096, 3072u);
        places.insert(place);
      }
    }
  }
  EXPECT_EQ(places.size(), 6u * 256 * 52);
}

TEST(LutIndex, FollowsHalvesStripesSlotsTilesAndRows) {
  // Face 4 is the second of the second half; row 9 is row 1 of stripe 2; column 21 is
  // column 5 of tile 2.
  EXPECT_EQ(lut_index(4, 9, 21), 262144u + 2 * 4096 + 1 * 1024 + 2 * 32 + 1 * 8 + 5);
}

}  // namespace
}  // namespace ocpan

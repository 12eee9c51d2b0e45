#include "tables/lookup_tables.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "src/result_codes.h"
#include "tables/lut_format.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

// Six blocks with all samples at one position, far off the picture.
std::vector<point_block> positions_at(double x, double y) {
  std::vector<point_block> positions(6);
  for (point_block& face : positions) {
    for (Eigen::MatrixXd& row : face) {
      row.resize(256, 2);
      row.col(0).setConstant(x);
      row.col(1).setConstant(y);
    }
  }
  return positions;
}

// The weight that a 3 x 2 mask with white pixels at column 2 and at (0, 0) gives a position:
// each white pixel has distance 1 and so full weight.
int weight_at(double x, double y) {
  cv::Mat mask = cv::Mat::zeros(2, 3, CV_8UC1);
  mask.at<unsigned char>(0, 0) = mask.at<unsigned char>(0, 2) = mask.at<unsigned char>(1, 2) = 255;
  return static_cast<int>(lut_entries(positions_at(x, y), mask)[lut_index(2, 3, 4)] & 0x3ff);
}

TEST(LutEntries, WeightIsThatOfTheTruncatedPosition) {
  EXPECT_EQ(weight_at(0.99, 0.99), 1023);
  EXPECT_EQ(weight_at(1.0, 0.0), 0);
  EXPECT_EQ(weight_at(2.99, 1.99), 1023);
}

TEST(LutEntries, PositionsJustBeforeThePictureTruncateIntoIt) {
  EXPECT_EQ(weight_at(-0.4, -0.9999), 1023);
  EXPECT_EQ(weight_at(-1.0, 0.0), 0);
  EXPECT_EQ(weight_at(0.0, -1.0), 0);
}

TEST(LutEntries, PositionsBehindThePictureHaveNoWeight) {
  EXPECT_EQ(weight_at(3.0, 0.0), 0);
  EXPECT_EQ(weight_at(2.0, 2.0), 0);
}

TEST(LutEntries, PositionsBeyondAnIntHaveNoWeight) {
  constexpr double infinite = std::numeric_limits<double>::infinity();
  // 2^32 is column 0 once only its low 32 bits are kept.
  for (const double far : {4294967296.0, -4294967296.0, 2147483648.0, 1e300, -infinite, infinite}) {
    EXPECT_EQ(weight_at(far, 0.0), 0) << far;
    EXPECT_EQ(weight_at(0.0, far), 0) << far;
  }
}

TEST(LutEntries, PositionThatIsNoNumberGivesAnEntryOfZero) {
  const auto entries = lut_entries(positions_at(std::nan(""), 0.0), cv::Mat(2, 2, CV_8UC1, 255));
  for (const std::uint64_t entry : entries) ASSERT_EQ(entry, 0u);
}

TEST(LutEntries, StandWhereTheFormatPutsThemAndSlotsOfZerosBetween) {
  std::vector<point_block> positions = positions_at(-100, -100);
  positions[4][9].row(21) << 7.5, 3.25;
  const auto entries = lut_entries(positions, cv::Mat::zeros(8, 8, CV_8UC1));
  ASSERT_EQ(entries.size(), lut_entry_count);
  EXPECT_EQ(entries[lut_index(4, 9, 21)], pack_lut_entry(7.5, 3.25, 0));
  int zeros = 0, elsewhere = 0;
  for (const std::uint64_t entry : entries) {
    zeros += entry == 0;
    elsewhere += entry == pack_lut_entry(-100, -100, 0);
  }
  EXPECT_EQ(zeros, 131072);
  EXPECT_EQ(elsewhere, 6 * 65536 - 1);
}

TEST(GenerateLookupTables, RefusesOtherFaceSizesOnceTheCalibrationIsRead) {
  const testing::temp_folder folder;
  testing::write_file(folder.file("rig.pts"), "i w4 h4 f2 v90\n");
  for (const int size : {0, 128, 254, -1}) {
    const std::string printed = testing::printed_by([&] {
      EXPECT_EQ(generate_lookup_tables(folder.file("rig.pts").c_str(), folder.file("mask"),
                                       folder.file("out"), 1.0f, size, false),
                code::argument_invalid);
    });
    EXPECT_EQ(printed, "Cube face size must be 129 or 253, got: " + std::to_string(size) + "\n");
  }
}

}  // namespace
}  // namespace ocpan

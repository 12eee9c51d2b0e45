#include "production/quad_colours.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

const double nan_value = std::numeric_limits<double>::quiet_NaN();

std::vector<prod_corner> corners_at(const std::vector<std::pair<double, double>>& positions) {
  std::vector<prod_corner> corners;
  for (const auto& [x, y] : positions) corners.push_back({x, y, 1, 0, 0, 1});
  return corners;
}

// Ten times the column, which blurring leaves as it is inside.
cv::Mat1b slope() {
  cv::Mat1b picture(20, 20);
  for (int x = 0; x < 20; ++x) picture.col(x) = 10 * x;
  return picture;
}

quad_stats stats_of(const cv::Mat1b& picture,
                    const std::vector<std::pair<double, double>>& positions) {
  const auto stats = quad_intensity_stats(picture, {{0, 1, 2, 3}}, corners_at(positions));
  EXPECT_EQ(stats.size(), 1u);
  return stats.front();
}

TEST(QuadIntensityStats, CountThePixelsOnTheRim) {
  // Columns 4 to 8 alike often: mean 60, mean square 3800.
  const quad_stats stats = stats_of(slope(), {{4, 4}, {8, 4}, {8, 8}, {4, 8}});
  EXPECT_NEAR(stats.mean, 60, 1e-9);
  EXPECT_NEAR(stats.deviation, std::sqrt(200), 1e-9);
}

TEST(QuadIntensityStats, CountThePixelsOfBothTriangles) {
  // A triangle a, b, c of columns 4, 5, 6 with 1, 2, 3 pixels and, beyond the side from a to
  // c, one more column of 3, 2, 1 with d: rows of columns 4 to 6 and 5 to 7 and so on.
  // Pixels: row 4: 4 to 6, row 5: 5 to 7, row 6: 6 to 8.
  const quad_stats stats = stats_of(slope(), {{4, 4}, {6, 4}, {8, 6}, {6, 6}});
  // Sum of columns 4 + 5 + 6 + 5 + 6 + 7 + 6 + 7 + 8 = 54 over 9.
  EXPECT_NEAR(stats.mean, 60, 1e-9);
  // Squares: 16 + 25 + 36 + 25 + 36 + 49 + 36 + 49 + 64 = 336 over 9, less 36.
  EXPECT_NEAR(stats.deviation, 10 * std::sqrt(336.0 / 9 - 36), 1e-9);
}

TEST(QuadIntensityStats, AreThoseOfTheBlurredPicture) {
  cv::Mat1b picture(20, 20, uchar{0});
  picture.colRange(10, 20) = 200;
  // One column beside the step: of the weights 0.0545, 0.2442, 0.4026, 0.2442, 0.0545 the
  // last two lie in the light.
  const quad_stats stats = stats_of(picture, {{8.9, 5}, {9.1, 5}, {9.1, 9}, {8.9, 9}});
  EXPECT_NEAR(stats.mean, 0.2987 * 200, 1);
  EXPECT_EQ(stats.deviation, 0);
}

TEST(QuadIntensityStats, OfAQuadBetweenThePixelsAreNotANumber) {
  const quad_stats stats = stats_of(slope(), {{4.2, 4.2}, {4.6, 4.2}, {4.6, 4.6}, {4.2, 4.6}});
  EXPECT_TRUE(std::isnan(stats.mean));
  EXPECT_TRUE(std::isnan(stats.deviation));
}

TEST(QuadIntensityStats, OfAQuadWithoutAreaAreNotANumber) {
  EXPECT_TRUE(std::isnan(stats_of(slope(), {{4, 4}, {6, 6}, {8, 8}, {10, 10}}).mean));
}

TEST(QuadIntensityStats, StayInsideThePicture) {
  // Columns 17 to 19 of which the last is blurred with its mirror image: 170, 180, 188 or so.
  const quad_stats stats = stats_of(slope(), {{17, 17}, {19.9, 17}, {19.9, 19.9}, {17, 19.9}});
  EXPECT_GT(stats.mean, 175);
  EXPECT_LT(stats.mean, 182);
}

std::vector<char> colours_of(const std::vector<prod_quad>& quads,
                             const std::vector<quad_stats>& stats) {
  const quad_lists lists = classify_quads(quads, stats);
  std::vector<char> colours(quads.size(), '-');
  for (std::size_t q = 0; q < quads.size(); ++q) {
    for (const prod_quad& white : lists.white) colours[q] = white == quads[q] ? 'w' : colours[q];
    for (const prod_quad& black : lists.black) colours[q] = black == quads[q] ? 'b' : colours[q];
  }
  EXPECT_EQ(
      lists.white.size() + lists.black.size(),
      quads.size() - static_cast<std::size_t>(std::count(colours.begin(), colours.end(), '-')));
  return colours;
}

using colours = std::vector<char>;

// Two quads with a side in common, a third that shares one corner with the second, and one
// that shares none.
const std::vector<prod_quad> row = {{0, 1, 4, 3}, {1, 2, 5, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};

TEST(ClassifyQuads, UseTheFixedThresholdForAQuadAlone) {
  EXPECT_EQ(colours_of({row[3]}, {{140, 6}}), colours{'w'});    // 140 - 11.76 = 128.24
  EXPECT_EQ(colours_of({row[3]}, {{140, 6.2}}), colours{'-'});  // 127.85 to 152.15
  EXPECT_EQ(colours_of({row[3]}, {{116, 6}}), colours{'b'});    // 116 + 11.76 = 127.76
  EXPECT_EQ(colours_of({row[3]}, {{116, 6.2}}), colours{'-'});
}

TEST(ClassifyQuads, AreNoColourExactlyAtTheThreshold) {
  EXPECT_EQ(colours_of({row[3]}, {{128, 0}}), colours{'-'});
}

TEST(ClassifyQuads, UseTheMidPointOfTheNeighbours) {
  // Both dark, but 30 and 60 differ by more than 1.96 times 5: threshold 45.
  EXPECT_EQ(colours_of({row[0], row[1]}, {{30, 5}, {60, 5}}), (colours{'b', 'w'}));
}

TEST(ClassifyQuads, UseTheFixedThresholdAmongNeighboursThatAreAlike) {
  // 60 is not above 40.4 + 1.96 * 10: both below 128.
  EXPECT_EQ(colours_of({row[0], row[1]}, {{40.4, 10}, {60, 3}}), (colours{'b', 'b'}));
  // 60.1 is above 40.4 + 19.6 = 60.0: threshold 50.25, and 40.4 + 19.6 lies above that.
  EXPECT_EQ(colours_of({row[0], row[1]}, {{40.4, 10}, {60.1, 3}}), (colours{'-', 'w'}));
}

TEST(ClassifyQuads, LookAtAllQuadsThatShareACorner) {
  // The third sees the second only (threshold 150), the second sees both others (115).
  EXPECT_EQ(colours_of({row[0], row[1], row[2]}, {{30, 1}, {100, 1}, {200, 1}}),
            (colours{'b', 'b', 'w'}));
  // The quad apart plays no part: 100 and 200 are judged by 150.
  EXPECT_EQ(colours_of({row[1], row[2], row[3]}, {{100, 1}, {200, 1}, {30, 1}}),
            (colours{'b', 'w', 'b'}));
}

TEST(ClassifyQuads, SkipUnevenQuadsAndDoNotCountThemAsNeighbours) {
  // With the uneven one counted the threshold would be 75.
  EXPECT_EQ(colours_of({row[0], row[1]}, {{50, 1}, {100, 32.5}}), (colours{'b', '-'}));
  EXPECT_EQ(colours_of({row[0], row[1]}, {{100, 1}, {50, 32.5}}), (colours{'b', '-'}));
}

TEST(ClassifyQuads, JudgeAQuadOfTheLargestDeviationWithoutCountingIt) {
  // 200 - 62.72 is above 128; a deviation of exactly 32 doesn't make a neighbour, so 100
  // stays below 128 and isn't judged by 150.
  EXPECT_EQ(colours_of({row[0], row[1]}, {{200, 32}, {110, 1}}), (colours{'w', 'b'}));
  EXPECT_EQ(colours_of({row[0], row[1]}, {{200, 32}, {140, 1}}), (colours{'w', 'w'}));
}

TEST(ClassifyQuads, LeaveOutQuadsThatAreNotANumber) {
  EXPECT_EQ(colours_of({row[0], row[1]}, {{nan_value, nan_value}, {100, 1}}), (colours{'-', 'b'}));
  EXPECT_EQ(colours_of({row[0]}, {{200, nan_value}}), colours{'-'});
}

TEST(ClassifyQuads, UseTheFixedThresholdWhereNoNeighbourCounts) {
  // A deviation of 32 isn't counted even for the quad itself: 60 + 62.72 is below 128.
  EXPECT_EQ(colours_of({row[0], row[1]}, {{60, 32}, {10, 40}}), (colours{'b', '-'}));
  EXPECT_EQ(colours_of({row[0], row[1]}, {{120, 1}, {10, 40}}), (colours{'b', '-'}));
}

TEST(ClassifyQuads, OfNoneAreNone) {
  const quad_lists lists = classify_quads({}, {});
  EXPECT_TRUE(lists.white.empty());
  EXPECT_TRUE(lists.black.empty());
}

}  // namespace
}  // namespace ocpan

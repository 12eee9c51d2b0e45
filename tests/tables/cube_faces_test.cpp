#include "tables/cube_faces.h"

#include <cmath>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

TEST(CubeGrid, SmallFaceSpansSamples64To192) {
  const auto t = cube_grid(129);
  EXPECT_EQ(t[0], -2.0);
  EXPECT_EQ(t[64], -1.0);
  EXPECT_EQ(t[128], 0.0);
  EXPECT_EQ(t[192], 1.0);
  EXPECT_EQ(t[255], 1.984375);
}

TEST(CubeGrid, LargeFaceSpansSamples2To254) {
  const auto t = cube_grid(253);
  EXPECT_EQ(t[0], -128.0 / 126);
  EXPECT_EQ(t[2], -1.0);
  EXPECT_EQ(t[128], 0.0);
  EXPECT_EQ(t[254], 1.0);
  EXPECT_EQ(t[255], 127.0 / 126);
}

TEST(CubeFaces, EachFaceHasItsAxisAtSample128) {
  const auto faces = cube_faces(253);
  ASSERT_EQ(faces.size(), 6u);
  const double axes[6][3] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
  for (std::size_t face = 0; face < 6; ++face) {
    for (int j = 0; j < 3; ++j) EXPECT_EQ(faces[face][128](128, j), axes[face][j]) << face;
  }
}

TEST(CubeFaces, RowsRunAlongAAndColumnsAlongB) {
  // On the small face sample 192 lies at 1 and sample 96 at -0.5: a = 192, b = 96 gives
  // vectors of 1, -0.5 and 1 in some order, 1.5 long.
  const auto faces = cube_faces(129);
  const double b = -0.5 / 1.5, a = 1.0 / 1.5, one = 1.0 / 1.5;
  const double expected[6][3] = {{one, b, a},  {-one, b, a}, {b, one, a},
                                 {b, -one, a}, {b, a, one},  {b, a, -one}};
  for (std::size_t face = 0; face < 6; ++face) {
    for (int j = 0; j < 3; ++j) EXPECT_EQ(faces[face][192](96, j), expected[face][j]) << face;
  }
}

TEST(CubeFaces, SamplesBeyondTheFaceAreDirectionsToo) {
  const auto faces = cube_faces(129);
  int seen = 0;
  for (const point_block& face : faces) {
    for (const Eigen::MatrixXd& row : face) {
      ASSERT_EQ(row.rows(), 256);
      ASSERT_EQ(row.cols(), 3);
      EXPECT_LT((row.rowwise().norm().array() - 1).abs().maxCoeff(), 1e-15);
      ++seen;
    }
  }
  EXPECT_EQ(seen, 6 * 256);
  // (1, -2, -2) is 3 long.
  EXPECT_EQ(faces[0][0](0, 0), 1.0 / 3);
}

}  // namespace
}  // namespace ocpan

#include "tables/mask_outline.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

cv::Mat black(int rows, int columns) { return cv::Mat::zeros(rows, columns, CV_8UC1); }

int set_at(const cv::Mat& mask, int r, int c) {
  const bool inside = r >= 0 && r < mask.rows && c >= 0 && c < mask.cols;
  return inside && mask.at<unsigned char>(r, c) > 0;
}

// The same by the definition, over whole pictures.
std::vector<pixel> all_edge_pixels(const cv::Mat& mask) {
  std::vector<pixel> edges;
  for (int r = 0; r < mask.rows; ++r) {
    for (int c = 0; c < mask.cols; ++c) {
      int sum = 0;
      for (int i = 0; i < 9; ++i) sum += set_at(mask, r + i / 3 - 1, c + i % 3 - 1);
      if (sum >= 1 && sum <= 8) edges.push_back({c, r});
    }
  }
  std::sort(edges.begin(), edges.end(), [](const pixel& left, const pixel& right) {
    return left.x != right.x ? left.x < right.x : left.y > right.y;
  });
  return edges;
}

cv::Mat halved_picture(const cv::Mat& mask) {
  cv::Mat half = black((mask.rows + 2) / 2, (mask.cols + 2) / 2);
  for (int r = 0; r < half.rows; ++r) {
    for (int c = 0; c < half.cols; ++c) {
      for (int i = 0; i < 9; ++i) {
        if (set_at(mask, 2 * r + i / 3 - 1, 2 * c + i % 3 - 1)) half.at<unsigned char>(r, c) = 1;
      }
    }
  }
  return half;
}

std::vector<pixel> plain_outline(const std::vector<pixel>& p) {
  if (p.empty()) return {};
  const auto cross = [](const pixel& a, const pixel& b, const pixel& q) {
    return (q.y - a.y) * (b.x - a.x) - (b.y - a.y) * (q.x - a.x);
  };
  std::vector<pixel> h(2 * p.size() + 2);
  std::size_t k = 0;
  for (const pixel& q : p) {
    while (k >= 2 && cross(h[k - 2], h[k - 1], q) <= 0) --k;
    h[k++] = q;
  }
  const std::size_t base = k - 1;
  std::size_t t = 0;
  for (std::size_t i = p.size(); i-- > 0;) {
    while (t >= 2 && cross(h[base + t - 2], h[base + t - 1], p[i]) <= 0) --t;
    h[base + t++] = p[i];
  }
  h.resize(k + t - 2);
  return h;
}

std::vector<Eigen::Vector2d> plain_coarse_hull(cv::Mat mask) {
  double scale = 1;
  std::vector<pixel> outline = plain_outline(all_edge_pixels(mask));
  while (outline.size() > 128) {
    mask = halved_picture(mask);
    scale *= 2;
    outline = plain_outline(all_edge_pixels(mask));
  }
  std::vector<Eigen::Vector2d> hull;
  for (const pixel& v : outline) hull.emplace_back(v.x * scale, v.y * scale);
  return hull;
}

TEST(EdgePixelList, OfAFullPictureIsItsRim) {
  const auto edges = edge_pixel_list(extent_of(cv::Mat(3, 2, CV_8UC1, cv::Scalar(1))));
  EXPECT_EQ(edges, (std::vector<pixel>{{0, 2}, {0, 0}, {1, 2}, {1, 0}}));
}

TEST(EdgePixelList, ReachesAPixelBeyondTheSetOnes) {
  cv::Mat mask = black(6, 6);
  mask.at<unsigned char>(3, 2) = 1;
  const auto edges = edge_pixel_list(extent_of(mask));
  EXPECT_EQ(edges, (std::vector<pixel>{{1, 4}, {1, 2}, {2, 4}, {2, 2}, {3, 4}, {3, 2}}));
}

TEST(ConvexOutline, DropsPointsOnStraightEdges) {
  const std::vector<pixel> points = {{0, 4}, {0, 2}, {0, 0}, {2, 4},
                                     {2, 0}, {4, 4}, {4, 3}, {4, 0}};
  EXPECT_EQ(convex_outline(points), (std::vector<pixel>{{0, 4}, {0, 0}, {4, 0}, {4, 4}}));
}

TEST(ConvexOutline, OfALineIsItsEndsAndOfAPointNothing) {
  EXPECT_EQ(convex_outline({{0, 0}, {1, 1}, {2, 2}}), (std::vector<pixel>{{0, 0}, {2, 2}}));
  EXPECT_TRUE(convex_outline({{5, 5}}).empty());
  EXPECT_TRUE(convex_outline({}).empty());
}

TEST(CoarseHull, OfAFullPictureIsItsFourCorners) {
  const auto hull = coarse_hull(cv::Mat(30, 40, CV_8UC1, cv::Scalar(255)));
  ASSERT_EQ(hull.size(), 4u);
  EXPECT_EQ(hull[0], Eigen::Vector2d(0, 29));
  EXPECT_EQ(hull[1], Eigen::Vector2d(0, 0));
  EXPECT_EQ(hull[2], Eigen::Vector2d(39, 0));
  EXPECT_EQ(hull[3], Eigen::Vector2d(39, 29));
}

TEST(CoarseHull, TakesEveryPixelAboveZero) {
  const auto hull = coarse_hull(cv::Mat(3, 3, CV_8UC1, cv::Scalar(1)));
  EXPECT_EQ(hull.size(), 4u);
}

TEST(CoarseHull, IsEmptyWithoutASetPixelAndForASinglePixel) {
  EXPECT_TRUE(coarse_hull(black(10, 10)).empty());
  EXPECT_TRUE(coarse_hull(cv::Mat(1, 1, CV_8UC1, cv::Scalar(255))).empty());
}

TEST(CoarseHull, IsThatOfWholePicturesOverRandomMasks) {
  std::mt19937 random(5);
  for (int trial = 0; trial < 300; ++trial) {
    cv::Mat mask = black(1 + random() % 40, 1 + random() % 40);
    const auto pixels = random() % 30;
    for (unsigned i = 0; i < pixels; ++i) {
      mask.at<unsigned char>(random() % mask.rows, random() % mask.cols) = 1 + random() % 255;
    }
    EXPECT_EQ(coarse_hull(mask), plain_coarse_hull(mask)) << trial;
    const mask_extent half = halved(extent_of(mask));
    EXPECT_EQ(convex_outline(edge_pixel_list(half)),
              plain_outline(all_edge_pixels(halved_picture(mask))))
        << trial;
  }
}

// A disk, whose hull has far more than 128 vertices when it is large.
cv::Mat disk(int size, double radius) {
  cv::Mat mask = black(size, size);
  const double middle = (size - 1) / 2.0;
  for (int r = 0; r < size; ++r) {
    for (int c = 0; c < size; ++c) {
      const double x = c - middle, y = r - middle;
      if (x * x + y * y <= radius * radius) mask.at<unsigned char>(r, c) = 255;
    }
  }
  return mask;
}

TEST(CoarseHull, HalvesUntil128VerticesSuffice) {
  const cv::Mat mask = disk(901, 449.6);
  ASSERT_GT(convex_outline(edge_pixel_list(extent_of(mask))).size(), 128u);
  const auto hull = coarse_hull(mask);
  EXPECT_LE(hull.size(), 128u);
  EXPECT_EQ(hull, plain_coarse_hull(mask));
  for (const Eigen::Vector2d& vertex : hull) {
    EXPECT_EQ(vertex, (vertex / 2).array().floor().matrix() * 2);
  }
}

TEST(CoarseHull, LeavesAMaskOfFewVerticesAtItsScale) {
  const cv::Mat mask = disk(101, 40.3);
  const auto outline = convex_outline(edge_pixel_list(extent_of(mask)));
  ASSERT_LE(outline.size(), 128u);
  const auto hull = coarse_hull(mask);
  ASSERT_EQ(hull.size(), outline.size());
  for (std::size_t i = 0; i < hull.size(); ++i) {
    EXPECT_EQ(hull[i], Eigen::Vector2d(outline[i].x, outline[i].y));
  }
}

}  // namespace
}  // namespace ocpan

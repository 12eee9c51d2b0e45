#include "production/corner_refinement.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace ocpan {
namespace {

double radians(double degrees) { return degrees * std::numbers::pi / 180; }

// Two edges that cross at a point, their directions in degrees, right and down.
struct crossing {
  double x = 30.3;
  double y = 28.6;
  double first = 10;
  double second = 100;
  double contrast = 100;  // grey values to either side of 120
};

cv::Mat1b picture_of(const crossing& c, cv::Size size = {60, 60}) {
  cv::Mat1b picture(size);
  const auto side = [&](int x, int y, double degrees) {
    const double across =
        (y - c.y) * std::cos(radians(degrees)) - (x - c.x) * std::sin(radians(degrees));
    return std::erf(across / (std::sqrt(2) * 0.9));
  };
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      picture(y, x) =
          cv::saturate_cast<uchar>(120 + c.contrast * side(x, y, c.first) * side(x, y, c.second));
    }
  }
  return picture;
}

std::vector<prod_corner> refined(const crossing& c) {
  return refine_corners(picture_of(c), {{std::round(c.x), std::round(c.y)}});
}

// Degrees between a direction and an edge, either way along it.
double off_edge(double e_x, double e_y, double edge_degrees) {
  const double cosine =
      e_x * std::cos(radians(edge_degrees)) + e_y * std::sin(radians(edge_degrees));
  return std::acos(std::min(1.0, std::abs(cosine))) * 180 / std::numbers::pi;
}

TEST(RefineCorners, FindThePlaceAndTheEdges) {
  for (const double turn : {0.0, 10.0, 33.0, 45.0, 80.0}) {
    crossing c;
    c.first = turn;
    c.second = turn + 80;
    const auto corners = refined(c);
    ASSERT_EQ(corners.size(), 1u) << turn;
    EXPECT_NEAR(corners[0].x, c.x, 0.06);
    EXPECT_NEAR(corners[0].y, c.y, 0.06);
    EXPECT_NEAR(std::hypot(corners[0].e1_x, corners[0].e1_y), 1, 1e-12);
    EXPECT_NEAR(std::hypot(corners[0].e2_x, corners[0].e2_y), 1, 1e-12);
    const double first_to_first = off_edge(corners[0].e1_x, corners[0].e1_y, c.first);
    const double first_to_second = off_edge(corners[0].e1_x, corners[0].e1_y, c.second);
    const double second_to_first = off_edge(corners[0].e2_x, corners[0].e2_y, c.first);
    const double second_to_second = off_edge(corners[0].e2_x, corners[0].e2_y, c.second);
    EXPECT_LT(std::min(first_to_first + second_to_second, first_to_second + second_to_first), 3);
  }
}

TEST(RefineCorners, MoveACandidateSomePixelsAside) {
  const auto corners = refine_corners(picture_of({}), {{32.4, 27.1}});
  ASSERT_EQ(corners.size(), 1u);
  EXPECT_NEAR(corners[0].x, 30.3, 0.03);
  EXPECT_NEAR(corners[0].y, 28.6, 0.03);
}

TEST(RefineCorners, RefuseAPlainPlace) {
  EXPECT_TRUE(refine_corners(cv::Mat1b(60, 60, uchar{90}), {{30, 30}}).empty());
}

TEST(RefineCorners, RefuseASingleEdge) {
  crossing edge;
  edge.second = 100;
  cv::Mat1b picture = picture_of(edge);
  picture.colRange(0, 60) = 20;
  picture.rowRange(30, 60) = 220;
  EXPECT_TRUE(refine_corners(picture, {{30, 30}}).empty());
}

TEST(RefineCorners, RefuseEdgesFarFromARightAngle) {
  // The gradients of an edge count only within 14.5 degrees of what crosses at right angles.
  crossing c;
  c.second = c.first + 76;
  EXPECT_EQ(refined(c).size(), 1u);
  c.second = c.first + 60;
  EXPECT_TRUE(refined(c).empty());
  c.second = c.first + 25;
  EXPECT_TRUE(refined(c).empty());
}

TEST(RefineCorners, RefuseACornerWithoutContrast) {
  crossing c;
  c.contrast = 30;
  EXPECT_EQ(refined(c).size(), 1u);
  c.contrast = 6;  // with a correlation of about 0.7 a score below 5.1
  EXPECT_TRUE(refined(c).empty());
}

TEST(RefineCorners, KeepTheFirstOfTwoNearerThanFourPixels) {
  const auto corners = refine_corners(picture_of({}), {{32, 28}, {30, 29}, {29, 29}});
  EXPECT_EQ(corners.size(), 1u);
}

TEST(RefineCorners, ComeInTheOrderOfTheCandidates) {
  cv::Mat1b picture(60, 120);
  crossing left, right;
  picture_of(left).copyTo(picture.colRange(0, 60));
  picture_of(right).copyTo(picture.colRange(60, 120));
  const auto corners = refine_corners(picture, {{90, 29}, {30, 29}});
  ASSERT_EQ(corners.size(), 2u);
  EXPECT_NEAR(corners[0].x, 90.3, 0.05);
  EXPECT_NEAR(corners[1].x, 30.3, 0.05);
}

TEST(RefineCorners, WorkInPatchesClippedAtTheRim) {
  crossing c;
  c.x = 3.3;
  c.y = 56.8;
  const auto corners = refined(c);
  ASSERT_EQ(corners.size(), 1u);
  EXPECT_NEAR(corners[0].x, c.x, 0.2);
  EXPECT_NEAR(corners[0].y, c.y, 0.2);
}

TEST(RefineCorners, TakeAnyCandidate) {
  const double none = std::nan("");
  EXPECT_TRUE(refine_corners(picture_of({}), {{-500, 20}, {1e300, 20}, {none, none}}).empty());
  EXPECT_TRUE(refine_corners(picture_of({}), {}).empty());
}

}  // namespace
}  // namespace ocpan

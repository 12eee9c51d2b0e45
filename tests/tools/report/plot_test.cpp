#include "tools/report/plot.h"

#include <gtest/gtest.h>

#include "model/parameters.h"
#include "tools/report/camera_outline.h"

namespace ocpan {
namespace {

TEST(RoundDown, GivesOneTwoOrFiveTimesAPowerOfTen) {
  EXPECT_DOUBLE_EQ(round_down(1), 1);
  EXPECT_DOUBLE_EQ(round_down(1.99), 1);
  EXPECT_DOUBLE_EQ(round_down(2), 2);
  EXPECT_DOUBLE_EQ(round_down(49), 20);
  EXPECT_DOUBLE_EQ(round_down(0.07), 0.05);
}

TEST(RoundValues, AreRoundWithinTheRangeAndNoMoreThanAsked) {
  EXPECT_EQ(round_values(0, 640, 7), (std::vector<double>{0, 100, 200, 300, 400, 500, 600}));
  EXPECT_EQ(round_values(479.5, -0.5, 6), (std::vector<double>{0, 100, 200, 300, 400}));
  EXPECT_EQ(round_values(-0.3, 0.3, 7).size(), 7u);
  EXPECT_EQ(round_values(-0.3, 0.3, 5).size(), 3u);  // -0.2, 0, 0.2
  EXPECT_EQ(round_values(2, 2, 5), std::vector<double>{2});
  int checked = 0;
  for (double high = 0.013; high < 3000; high *= 1.7, ++checked) {
    const std::vector<double> values = round_values(0, high, 6);
    EXPECT_GE(values.size(), 2u) << high;
    EXPECT_LE(values.size(), 6u) << high;
  }
  EXPECT_GT(checked, 20);
}

TEST(Plot, PutsAPictureUprightInTrueProportions) {
  plot p;
  p.x = {0, 200, "x"};
  p.y = {100, 0, "y"};  // pictures count downward
  p.height = even_height(p);
  EXPECT_DOUBLE_EQ(x_at(p, 0), p.left);
  EXPECT_DOUBLE_EQ(x_at(p, 200), p.width - p.right);
  EXPECT_DOUBLE_EQ(y_at(p, 0), p.top);
  EXPECT_DOUBLE_EQ(y_at(p, 100), p.height - p.bottom);
  EXPECT_NEAR(x_at(p, 10) - x_at(p, 0), y_at(p, 10) - y_at(p, 0), 1e-9);
}

TEST(Drawing, EscapesForeignWords) {
  EXPECT_NE(text(1, 2, "<set>", "").find("&lt;set&gt;"), std::string::npos);
  EXPECT_NE(drawing(10, 10, "\"set\"", "").find("aria-label=\"&quot;set&quot;\""),
            std::string::npos);
}

TEST(HullOf, LeavesOutWhatLiesWithin) {
  const polygon hull = hull_of({{0, 0}, {2, 2}, {1, 1}, {2, 0}, {0, 2}, {1, 0}});
  EXPECT_EQ(hull.size(), 4u);
}

TEST(CameraOutline, SpansTheFieldOfView) {
  const camera_details details{640, 480, 90, 0};
  const camera_outline outline = outline_of(initial_model(details), details, 10);
  ASSERT_FALSE(outline.ends.empty());
  double widest = 0;
  for (const Eigen::Vector3d& end : outline.ends) {
    EXPECT_NEAR((end - outline.centre).norm(), 10, 1e-9);
    widest = std::max(widest, std::abs(end.x() / end.z()));
  }
  EXPECT_NEAR(widest, 1, 0.002);  // tan 45 degrees, and half a pixel
  EXPECT_LT(outline.ahead.z(), -11);
}

TEST(CameraOutline, EndsWhereAFisheyesImageEnds) {
  const camera_details details{640, 640, 220, 2};
  model_map model = initial_model(details);
  model[L] = -0.7;  // images 128.6 degrees from the axis, which end within the picture
  model[H_0] *= 0.7;
  model[V_1] *= 0.7;
  const camera_outline outline = outline_of(model, details, 1);
  ASSERT_GT(outline.ends.size(), 60u);
  for (const Eigen::Vector3d& end : outline.ends) EXPECT_TRUE(end.allFinite());
}

}  // namespace
}  // namespace ocpan

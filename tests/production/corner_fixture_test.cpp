#include <algorithm>
#include <cmath>
#include <cstdio>

#include <gtest/gtest.h>

#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "production/corner_detection.h"
#include "production/corner_refinement.h"
#include "production/quad_colours.h"
#include "production/quads.h"
#include "simulator/fixture.h"

namespace ocpan {
namespace {

struct scene {
  rig_camera camera;
  fixture_description fixture;
};

scene tilted(const camera_details& details, double cell_degrees) {
  scene of;
  of.camera = {details,
               rotate_model(initial_model(details), rotation_from_vector({0.1, 0.4, 0.2}))};
  of.camera.model[C_0] = 30;
  of.fixture.cell_degrees = cell_degrees;
  return of;
}

std::vector<prod_corner> corners_in(const cv::Mat& picture) {
  corner_scratch scratch;
  return refine_corners(picture, detect_corner_candidates(picture, scratch));
}

TEST(CornersOfAFixture, AreFoundToATenthOfAPixelAndAreNoOthers) {
  int wanted = 0, found = 0;
  std::size_t detected = 0, real = 0;
  double squares = 0;
  for (const scene& of : {tilted({800, 600, 120, 1}, 6), tilted({640, 640, 220, 2}, 8),
                          tilted({640, 480, 90, 0}, 5)}) {
    const auto corners = corners_in(render_fixture(of.camera, of.fixture, 0));
    const auto truth = fixture_corners(of.camera, of.fixture);
    const auto distance = [](const fixture_corner& a, const prod_corner& b) {
      return std::hypot(a.pixel.x() - b.x, a.pixel.y() - b.y);
    };
    for (const fixture_corner& corner : truth) {
      if (corner.inside < 15 || corner.crossing_degrees <= 75) continue;
      ++wanted;
      double nearest = 2;
      for (const prod_corner& c : corners) nearest = std::min(nearest, distance(corner, c));
      if (nearest < 2) {
        ++found;
        squares += nearest * nearest;
      }
    }
    detected += corners.size();
    for (const prod_corner& c : corners) {
      real += std::any_of(truth.begin(), truth.end(),
                          [&](const fixture_corner& corner) { return distance(corner, c) < 2; });
    }
  }
  EXPECT_GT(wanted, 500);
  EXPECT_GE(found, 0.97 * wanted);
  EXPECT_LT(std::sqrt(squares / found), 0.1);
  EXPECT_GE(static_cast<double>(real), 0.99 * static_cast<double>(detected));
  std::printf("%d of %d corners found, RMS error %.3f pixels, %zu of %zu false\n", found, wanted,
              std::sqrt(squares / found), detected - real, detected);
}

TEST(QuadsOfAFixture, AreSortedByTheColourOfTheirCell) {
  scene of = tilted({800, 600, 120, 1}, 6);
  of.fixture.vignetting = 0.7;  // white at the rim is as dark as 90
  const cv::Mat picture = render_fixture(of.camera, of.fixture, 0);
  const auto corners = corners_in(picture);
  const auto quads = build_quads(corners);
  const quad_lists lists = classify_quads(quads, quad_intensity_stats(picture, quads, corners));
  const pattern_map pattern(of.fixture);
  const auto is_bright = [&](const prod_quad& quad) {
    Eigen::Vector2d middle = Eigen::Vector2d::Zero();
    for (const std::int32_t k : quad) {
      const prod_corner& corner = corners[static_cast<std::size_t>(k)];
      middle += Eigen::Vector2d(corner.x, corner.y) / 4;
    }
    const Eigen::Vector2d cell =
        pattern.cell_position(seen_on_sphere(of.camera.model, middle, of.fixture.radius_mm));
    return std::fmod(std::floor(cell.x()) + std::floor(cell.y()), 2.0) == 0.0;
  };
  EXPECT_GT(lists.white.size(), 90u);
  EXPECT_GT(lists.black.size(), 90u);
  EXPECT_GE(lists.white.size() + lists.black.size(), 0.97 * quads.size());
  EXPECT_TRUE(std::all_of(lists.white.begin(), lists.white.end(), is_bright));
  EXPECT_TRUE(std::none_of(lists.black.begin(), lists.black.end(), is_bright));
}

}  // namespace
}  // namespace ocpan

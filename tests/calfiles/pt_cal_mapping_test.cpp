#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "calfiles/polynomial_roots.h"
#include "calfiles/pt_cal.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

constexpr double degree = 3.141592653589793 / 180.0;

pt_cal loaded(const std::string& text) {
  const testing::temp_folder folder;
  testing::write_file(folder.file("rig.pts"), text);
  pt_cal calibration;
  EXPECT_EQ(calibration.load(folder.file("rig.pts").c_str()), 0);
  return calibration;
}

// The pixel of one direction.
Eigen::RowVector2d project(const pt_cal& calibration, const Eigen::RowVector3d& direction) {
  std::vector<point_block> in(1), out;
  for (Eigen::MatrixXd& row : in[0]) row.resize(0, 3);
  in[0][255] = direction;
  EXPECT_EQ(calibration.cam_project(in, 0, out), 0);
  return out.at(0)[255].row(0);
}

Eigen::RowVector3d unproject(const pt_cal& calibration, double x, double y) {
  Eigen::MatrixX3d points;
  EXPECT_EQ(calibration.cam_unproject(points, Eigen::RowVector2d(x, y), 0), 0);
  return points.row(0);
}

void expect_pixel(const Eigen::RowVector2d& got, double x, double y) {
  EXPECT_NEAR(got[0], x, 1e-9);
  EXPECT_NEAR(got[1], y, 1e-9);
}

// Picture 400 x 200; a fisheye of 2 radians over the width has 200 pixels per radian.
const std::string fisheye = "i w400 h200 f2 v114.59155902616465";

TEST(PtCalMapping, FisheyeIsEquidistantAboutMinusZ) {
  const pt_cal calibration = loaded(fisheye);
  const double t = 0.3;
  expect_pixel(project(calibration, {std::sin(t), 0, -std::cos(t)}), 60 + 199.5, 99.5);
  expect_pixel(project(calibration, {0, std::sin(t), -std::cos(t)}), 199.5, -60 + 99.5);
}

TEST(PtCalMapping, ProjectionThreeIsTwo) {
  const pt_cal calibration = loaded("i w400 h200 f3 v114.59155902616465");
  expect_pixel(project(calibration, {std::sin(2.5), 0, -std::cos(2.5)}), 500 + 199.5, 99.5);
}

TEST(PtCalMapping, RectilinearScalesByTheTangent) {
  // 90 degrees over 400 pixels: 200 pixels per unit tangent.
  const pt_cal calibration = loaded("i w400 h200 f0 v90");
  expect_pixel(project(calibration, {0.4, 0.1, -1}), 80 + 199.5, -20 + 99.5);
}

TEST(PtCalMapping, DirectionBehindARectilinearPictureStaysFarOut) {
  // The tangent of 135 degrees would mirror it to 200 pixels on the other side.
  const pt_cal calibration = loaded("i w400 h200 f0 v90");
  const Eigen::RowVector2d right = project(calibration, {1, 0, 1});
  EXPECT_GT(right[0], 1e12);
  EXPECT_NEAR(right[1], 99.5, 1e-9);
  EXPECT_LT(project(calibration, {-1, 0, 1})[0], -1e12);
  EXPECT_LT(project(calibration, {0, 1, 1})[1], -1e12);
}

TEST(PtCalMapping, PanoramaSizeCancelsOut) {
  const pt_cal calibration = loaded("p w777 h50 v123\n" + fisheye);
  expect_pixel(project(calibration, {std::sin(0.3), 0, -std::cos(0.3)}), 60 + 199.5, 99.5);
}

TEST(PtCalMapping, RollPitchAndYawTurnInThisOrderAsRowVectors) {
  // With roll 90 degrees (sin t, 0, -cos t) becomes (0, sin t, -cos t), pitch p makes it
  // (0, sin(t + p), -cos(t + p)), yaw y then (-cos(t + p) sin y, sin(t + p),
  // -cos(t + p) cos y), and the last two change their signs.
  const pt_cal calibration = loaded(fisheye + " r90 p20 y30");
  const double t = 0.1, up = t + 20 * degree, yaw = 30 * degree;
  const Eigen::Vector3d q(-std::cos(up) * std::sin(yaw), -std::sin(up),
                          std::cos(up) * std::cos(yaw));
  const double rho = std::hypot(q.x(), q.y());
  const double scale = std::atan2(rho, q.z()) * 200 / rho;
  expect_pixel(project(calibration, {std::sin(t), 0, -std::cos(t)}), q.x() * scale + 199.5,
               q.y() * scale + 99.5);
}

TEST(PtCalMapping, LensPolynomialCountsInHalvesOfTheSmallerSide) {
  // 50 pixels off the middle are s = 0.5 of half of 200 pixels.
  const pt_cal calibration = loaded(fisheye + " a0.1 b-0.2 c0.3");
  const double factor = ((0.1 * 0.5 - 0.2) * 0.5 + 0.3) * 0.5 + (1 - (0.1 - 0.2 + 0.3));
  expect_pixel(project(calibration, {std::sin(0.25), 0, -std::cos(0.25)}), 50 * factor + 199.5,
               99.5);
}

TEST(PtCalMapping, FromTheRadiusLimitOnPointsAreThrownFarOut) {
  // c = -0.5, d = 1.5: the polynomial grows up to 1.5, which is 150 pixels or 0.75 radians.
  const pt_cal calibration = loaded(fisheye + " c-0.5");
  const double inside = project(calibration, {std::sin(0.74), 0, -std::cos(0.74)})[0];
  EXPECT_NEAR(inside, 148 * (1.5 - 0.5 * 1.48) + 199.5, 1e-9);
  const double outside = project(calibration, {std::sin(0.76), 0, -std::cos(0.76)})[0];
  EXPECT_NEAR(outside, 152 * 1000.0 + 199.5, 1e-6);
}

TEST(PtCalMapping, ShiftComesBeforeShearAndShearMultipliesFromTheRight) {
  // (60 + 3, 0 + 5) x [[1, 20 / 200], [40 / 400, 1]].
  const pt_cal calibration = loaded(fisheye + " d3 e5 g20 t40");
  expect_pixel(project(calibration, {std::sin(0.3), 0, -std::cos(0.3)}), 63 + 5 * 0.1 + 199.5,
               63 * 0.1 + 5 + 99.5);
}

TEST(PtCalMapping, CropSetsScaleAndMiddle) {
  // Crop 0..200 of 400: 100 pixels per radian about x = 100, and half of 200 for the lens.
  const pt_cal calibration = loaded(fisheye + " C0,200,0,200");
  expect_pixel(project(calibration, {std::sin(0.3), 0, -std::cos(0.3)}), 30 + 99.5, 99.5);
}

TEST(PtCalMapping, DirectionOnTheAxisIsNotANumber) {
  const Eigen::RowVector2d pixel = project(loaded(fisheye), {0, 0, -1});
  EXPECT_TRUE(std::isnan(pixel[0]));
  EXPECT_TRUE(std::isnan(pixel[1]));
}

TEST(PtCalMapping, PanoramaWithoutWidthGivesNoNumbers) {
  const pt_cal calibration = loaded("p h10\n" + fisheye);
  EXPECT_FALSE(std::isfinite(project(calibration, {0.1, 0, -1})[0]));
  EXPECT_FALSE(unproject(calibration, 10, 10).allFinite());
}

TEST(PtCalMapping, CentreComesBackAsTheCentre) {
  const Eigen::RowVector3d axis(0, 0, -1);
  EXPECT_EQ(unproject(loaded(fisheye), 199.5, 99.5), axis);
  EXPECT_EQ(unproject(loaded("i w400 h200 f0 v90 a0.1"), 199.5, 99.5), axis);
}

TEST(PtCalMapping, UnprojectsUnitDirections) {
  const pt_cal calibration = loaded(fisheye + " a0.05 y40 p10 g3");
  EXPECT_NEAR(unproject(calibration, 10, 190).norm(), 1, 1e-14);
}

TEST(PtCalMapping, RadiusThatTheLensNeverReachesIsThrownFarOut) {
  // c = -1, d = 2: the most that s (2 - s) reaches is 1, so 150 pixels of 100 have no root.
  const pt_cal calibration = loaded(fisheye + " c-1");
  const double u = 150 * 1000.0 / 200;
  const Eigen::RowVector3d got = unproject(calibration, 150 + 199.5, 99.5);
  EXPECT_NEAR(got[0], std::sin(u), 1e-9);
  EXPECT_NEAR(got[2], -std::cos(u), 1e-9);
}

TEST(PtCalMapping, LensInversionTakesTheRootNearestToTheDistortedRadius) {
  // c = -1, d = 2: s = 0.96 has the roots 0.8 and 1.2, and 0.8 lies nearer.
  const pt_cal near = loaded(fisheye + " c-1");
  EXPECT_NEAR(unproject(near, 96 + 199.5, 99.5)[0], std::sin(0.4), 1e-9);
  // c = 1, d = 0: s = 0.25 has the roots 0.5 and -0.5.
  const pt_cal growing = loaded(fisheye + " c1");
  EXPECT_NEAR(unproject(growing, 25 + 199.5, 99.5)[0], std::sin(0.25), 1e-9);
}

TEST(PtCalMapping, LensInversionTakesTheEarlierOfTwoRootsAsNear) {
  // With c = 1 / (1 - 2 s) the roots of c z^2 + (1 - c) z - s have s for their mean. Whether
  // both come out as near in the last bit is rounding, so many such lenses are tried. Half of
  // 128 pixels is the unit, so that s is exact.
  constexpr int most = 64 * 64;
  std::string lines;
  for (int n = most / 2 + 1; n < most; ++n) {
    char text[100];
    std::snprintf(text, sizeof text, "i w256 h128 f2 v90 c%.17g\n", 1 / (1 - 2.0 * n / most));
    lines += text;
  }
  const pt_cal calibration = loaded(lines);
  int ties = 0;
  for (std::size_t camera = 0; camera < calibration.cam_count(); ++camera) {
    const double s = (static_cast<double>(camera) + most / 2 + 1) / most;
    const Eigen::Vector4d& lens = calibration.project().images[camera].lens;
    const std::vector<double> roots = real_roots({-s, lens[3], lens[2], lens[1], lens[0]});
    if (roots.size() != 2 || roots[0] == roots[1]) continue;
    if (std::abs(roots[0] - s) != std::abs(roots[1] - s)) continue;
    Eigen::MatrixX3d direction;
    const Eigen::RowVector2d pixel(64 * s + 127.5, 63.5);
    ASSERT_EQ(calibration.cam_unproject(direction, pixel, camera), 0);
    // 256 pixels are 90 degrees.
    EXPECT_NEAR(direction(0, 0), std::sin(64 * roots[0] / 256 * 90 * degree), 1e-9);
    ++ties;
  }
  EXPECT_GT(ties, 20);
}

TEST(PtCalMapping, NearestRootNeedNotBeTheRadiusThatWasProjected) {
  // a = -1, d = 2: f(r) = 2 r - r^4 grows up to 0.7937. f(0.75) lies above both radii that
  // reach it, so the one beyond the limit is the nearer.
  const double s = 2 * 0.75 - std::pow(0.75, 4);
  double low = 0.7937, high = 1.0;
  for (int i = 0; i < 60; ++i) {
    const double middle = (low + high) / 2;
    (2 * middle - std::pow(middle, 4) > s ? low : high) = middle;
  }
  const pt_cal calibration = loaded(fisheye + " a-1");
  EXPECT_NEAR(unproject(calibration, 100 * s + 199.5, 99.5)[0], std::sin(low / 2), 1e-9);
}

std::string random_line(std::mt19937& random, int kind) {
  const auto in = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  const double hfov = kind == 0 ? in(60, 110) : in(120, 200);
  char text[400];
  std::snprintf(text, sizeof text,
                "i w1920 h1440 f%d v%.3f y%.3f p%.3f r%.3f a%.4f b%.4f c%.4f d%.2f e%.2f g%.2f "
                "t%.2f C%.1f,%.1f,%.1f,%.1f\n",
                kind, hfov, in(-180, 180), in(-90, 90), in(-180, 180), in(-0.1, 0.1), in(-0.1, 0.1),
                in(-0.1, 0.1), in(-40, 40), in(-40, 40), in(-20, 20), in(-20, 20), in(-60, 200),
                in(1700, 1980), in(-60, 100), in(1300, 1500));
  return text;
}

TEST(PtCalMapping, UnprojectAndProjectAreInverse) {
  std::mt19937 random(11);
  int checked = 0;
  for (int trial = 0; trial < 240; ++trial) {
    const int kind = trial % 3 == 0 ? 0 : trial % 3 + 1;
    const std::string line = random_line(random, kind);
    const pt_cal calibration = loaded(line);
    const pt_image& image = calibration.project().images[0];
    const double half = 0.5 * image.crop_size.minCoeff();
    const double scale = kind == 0 ? image.crop_size[0] / (2 * std::tan(image.hfov / 2))
                                   : image.crop_size[0] / image.hfov;
    // To 95 % of where the lens grows, to beyond the picture's corners (from 2.5 on a lens
    // may have a nearer root beyond its limit), and for a fisheye to 175 degrees.
    double most = std::min({0.95 * image.radius_limit, 2.2});
    if (kind != 0) most = std::min(most, 175 * degree * scale / half);
    Eigen::MatrixX2d pixels(80, 2);
    for (int i = 0; i < 80; ++i) {
      const double r = most * (i + 1) / 80, angle = 2.4 * i;
      const Eigen::Vector4d& lens = image.lens;
      const double bent = half * r * (((lens[0] * r + lens[1]) * r + lens[2]) * r + lens[3]);
      const Eigen::RowVector2d moved =
          (Eigen::RowVector2d(bent * std::cos(angle), bent * std::sin(angle)) +
           image.shift.transpose()) *
          image.shear_matrix;
      pixels.row(i) = (moved + 0.5 * image.size.transpose()).array() - 0.5;
    }
    Eigen::MatrixX3d directions;
    ASSERT_EQ(calibration.cam_unproject(directions, pixels, 0), 0);
    std::vector<point_block> in(1), out;
    for (Eigen::MatrixXd& row : in[0]) row.resize(0, 3);
    in[0][0] = directions;
    ASSERT_EQ(calibration.cam_project(in, 0, out), 0);
    const double error = (out[0][0] - pixels).cwiseAbs().maxCoeff();
    EXPECT_LT(error, 1e-6) << line;
    checked += 80;
  }
  EXPECT_EQ(checked, 240 * 80);
}

// A crop far beyond the picture, about the same middle: 2e8 pixels per unit tangent, so that
// even the third order of an angle of 1e-5 is some 1e-7 pixels. The lens and the shift are 0.
const std::string giant = "i w0 h0 f0 v90 C-200000000,200000000,-200000000,200000000";

TEST(PtCalMapping, TangentIsTheAngleUpToAHundredThousandth) {
  const pt_cal calibration = loaded(giant);
  int checks = 0;
  for (const double u : {9e-6, 1.1e-5, 5e-4}) {
    const double bent = u <= 1e-5 ? u : std::tan(u);
    const double x = project(calibration, {std::sin(u), 0, -std::cos(u)})[0] + 0.5;
    EXPECT_NEAR(x / 2e8, bent, 1e-14 * u) << u;
    // Back again: the angle's sine.
    const double back = u <= 1e-5 ? u : std::atan(u);
    EXPECT_NEAR(unproject(calibration, 2e8 * u - 0.5, -0.5)[0], std::sin(back), 1e-13 * u) << u;
    ++checks;
  }
  EXPECT_EQ(checks, 3);
}

TEST(PtCalMapping, DirectionIsTheAxisUpToAHundredThousandthOfAPixel) {
  // The radius counts in pixels of the panorama, 1000 / pi per radian; the picture has 200.
  const pt_cal calibration = loaded("i w0 h0 f2 v114.59155902616465 C-200,200,-100,100");
  const double pano = 1000 / 3.141592653589793;
  int checks = 0;
  for (const double r : {9e-6, 1.1e-5, 5e-4}) {
    const Eigen::RowVector3d got = unproject(calibration, r / pano * 200 - 0.5, -0.5);
    if (r <= 1e-5) {
      EXPECT_EQ(got[0], 0) << r;
    } else {
      EXPECT_NEAR(got[0], r / pano, 1e-6 * r / pano) << r;
    }
    EXPECT_NEAR(got[2], -1, 1e-11) << r;
    ++checks;
  }
  EXPECT_EQ(checks, 3);
}

TEST(PtCalMapping, AppendsABlockForEachBlock) {
  const pt_cal calibration = loaded(fisheye);
  std::vector<point_block> in(2), out(1);
  for (point_block& block : in) {
    for (Eigen::MatrixXd& row : block) row = Eigen::MatrixXd::Constant(256, 3, 0.5);
  }
  ASSERT_EQ(calibration.cam_project(in, 0, out), 0);
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[2][255].rows(), 256);
  EXPECT_EQ(out[2][255].cols(), 2);
}

}  // namespace
}  // namespace ocpan

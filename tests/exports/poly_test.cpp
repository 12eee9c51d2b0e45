#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/exports/table_run.h"
#include "tests/support/table_reader.h"

namespace {

using namespace ocpan::testing;
namespace fs = std::filesystem;

constexpr std::size_t polygon_bytes = 1536;

using vector = std::array<double, 3>;

vector unit(const vector& v) {
  const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  return {v[0] / length, v[1] / length, v[2] / length};
}

vector cross(const vector& u, const vector& v) {
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

// Moves each vertex of a polygon on the sphere outward by a sixteenth.
std::vector<vector> expanded(const std::vector<vector>& p) {
  std::vector<vector> moved;
  const std::size_t n = p.size();
  for (std::size_t i = 0; i < n; ++i) {
    const vector &before = p[(i + n - 1) % n], &after = p[(i + 1) % n], &at = p[i];
    const vector along = {before[0] - after[0], before[1] - after[1], before[2] - after[2]};
    const vector normal = unit(cross(at, unit(along)));
    moved.push_back(
        unit({at[0] + 0.0625 * normal[0], at[1] + 0.0625 * normal[1], at[2] + 0.0625 * normal[2]}));
  }
  return moved;
}

void expect_polygon(const std::string& file, const std::vector<vector>& directions) {
  ASSERT_EQ(file.size(), polygon_bytes);
  ASSERT_EQ(directions.size(), 128u);
  for (std::size_t i = 0; i < 128; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      ASSERT_NEAR(read_polygon(file, i, j), directions[i][j], 0.51 / 16777216) << i << " " << j;
    }
  }
}

// The 128 vertices that come of the corners of a full picture of 200 x 100 pixels.
std::vector<std::array<double, 2>> rim_vertices() {
  std::vector<std::array<double, 2>> all = {{0, 99}, {0, 0}, {199, 0}, {199, 99}};
  // The longest edge is halved, the closing one first among those alike.
  while (all.size() < 128) {
    const auto length = [&](std::size_t i) {
      const auto &to = all[i % all.size()], &from = all[i - 1];
      return std::hypot(to[0] - from[0], to[1] - from[1]);
    };
    std::size_t end = all.size();
    for (std::size_t i = 1; i < all.size(); ++i) {
      if (length(i) > length(end)) end = i;
    }
    const auto &to = all[end % all.size()], &from = all[end - 1];
    const std::array<double, 2> middle = {(from[0] + to[0]) / 2, (from[1] + to[1]) / 2};
    all.insert(all.begin() + static_cast<std::ptrdiff_t>(end), middle);
  }
  return all;
}

TEST(PolyFromCalibration, RefusesNullStringsInSilence) {
  EXPECT_EQ(printed_by([] {
              EXPECT_EQ(ocPAN_PolyFromCalibration(nullptr, "m", "o", 1, 0), OCPAN_INVALID);
              EXPECT_EQ(ocPAN_PolyFromCalibration("c", nullptr, "o", 1, 0), OCPAN_INVALID);
              EXPECT_EQ(ocPAN_PolyFromCalibration("c", "m", nullptr, 1, 0), OCPAN_INVALID);
            }),
            "");
}

TEST(PolyFromCalibration, RefusesASmallRadiusOnlyWhereTheFlagIsOne) {
  table_run run("");
  fs::remove(run.calibration());
  EXPECT_EQ(run.poly(0.49f), OCPAN_INVALID);
  EXPECT_EQ(run.printed(), "");
  EXPECT_EQ(run.poly(0.5f), OCPAN_INPUT);
  EXPECT_EQ(run.poly(0.49f, 7), OCPAN_INPUT);
  EXPECT_EQ(run.poly(0.49f, 0), OCPAN_INPUT);
  EXPECT_EQ(run.poly(std::numeric_limits<float>::quiet_NaN()), OCPAN_INPUT);
  EXPECT_EQ(run.printed(),
            "Couldn't open: " + run.calibration() + "\nLoading Calibration data failed\n");
}

TEST(PolyFromCalibration, TakesAnyFlagButZeroAsSet) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  ASSERT_EQ(run.poly(), OCPAN_SUCCESS);
  const std::string expected = run.output(0);
  for (const int set : {2, -1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(run.poly(1, set), OCPAN_SUCCESS);
    EXPECT_TRUE(run.output(0) == expected) << set;
  }
}

TEST(PolyFromCalibration, FullPictureGivesItsRimALittleEnlarged) {
  table_run run(linear_camera);
  run.set_mask(0, 1);  // any pixel above 0 counts
  ASSERT_EQ(run.poly(), OCPAN_SUCCESS);
  EXPECT_EQ(run.printed(), "");
  std::vector<vector> directions;
  for (const auto& [x, y] : rim_vertices()) {
    directions.push_back(unit({(x - 100.03125) / 100, (50.03125 - y) / 100, -1}));
  }
  expect_polygon(run.output(0), expanded(directions));
  // The first vertex, the lower left corner, has moved farther from the axis.
  EXPECT_GT(read_polygon(run.output(0), 0, 2), directions[0][2] + 0.01);
}

TEST(PolyFromCalibration, CentreIsSubtractedFromThePointAtTheRadius) {
  std::string camera = linear_camera;
  camera.replace(camera.find("C_0:0"), 5, "C_0:500");
  table_run run(camera);
  run.set_mask(0, 255);
  ASSERT_EQ(run.poly(2.0f), OCPAN_SUCCESS);
  std::vector<vector> directions;
  for (const auto& [x, y] : rim_vertices()) {
    const vector ray = unit({(x - 100.03125) / 100, (50.03125 - y) / 100, -1});
    directions.push_back(unit({2000 * ray[0] - 500, 2000 * ray[1], 2000 * ray[2]}));
  }
  expect_polygon(run.output(0), expanded(directions));
}

TEST(PolyFromCalibration, MakesPolygonsOfProjectFiles) {
  // Equidistant with 100 pixels per radian about (99.5, 49.5).
  table_run run("i w200 h100 f3 v114.59155902616465\n");
  run.set_mask(0, 255);
  ASSERT_EQ(run.poly(0.0f, 0), OCPAN_SUCCESS);
  std::vector<vector> directions;
  for (const auto& [x, y] : rim_vertices()) {
    const double right = (x - 99.5) / 100, down = (y - 49.5) / 100;
    const double angle = std::hypot(right, down), sine = std::sin(angle) / angle;
    directions.push_back({right * sine, -down * sine, -std::cos(angle)});
  }
  expect_polygon(run.output(0), expanded(directions));
}

TEST(PolyFromCalibration, DirectionsAreOfUnitLength) {
  cv::Mat mask = cv::Mat::zeros(100, 200, CV_8UC1);
  for (int r = 20; r < 90; ++r) mask.row(r).colRange(30 + r / 3, 150 - r / 2).setTo(9);
  table_run run(linear_camera);
  run.set_mask(0, mask);
  ASSERT_EQ(run.poly(), OCPAN_SUCCESS);
  const std::string file = run.output(0);
  ASSERT_EQ(file.size(), polygon_bytes);
  for (std::size_t i = 0; i < 128; ++i) {
    double square = 0;
    for (std::size_t j = 0; j < 3; ++j) square += std::pow(read_polygon(file, i, j), 2);
    EXPECT_NEAR(square, 1, 2e-7);
  }
}

TEST(PolyFromCalibration, BlackMaskIsReportedAndLeavesNoFile) {
  table_run run(linear_camera + linear_camera);
  run.set_mask(0, 255);
  run.set_mask(1, 0);
  EXPECT_EQ(run.poly(), OCPAN_MALFORMED);
  EXPECT_EQ(run.printed(), "No mask pixels in: " + run.mask_name(1) + "\n");
  EXPECT_EQ(run.output(0).size(), polygon_bytes);
  EXPECT_FALSE(fs::exists(run.output_name(1)));
}

TEST(PolyFromCalibration, BlackMaskLeavesAnOlderFileAlone) {
  table_run run(linear_camera);
  run.set_mask(0, 0);
  write_file(run.output_name(0), "older");
  EXPECT_EQ(run.poly(), OCPAN_MALFORMED);
  EXPECT_EQ(run.output(0), "older");
}

TEST(PolyFromCalibration, PictureOfOnePixelHasNoOutline) {
  table_run run("Width:1 Height:1\n" + linear_model);
  run.set_mask(0, 255, 1, 1);
  EXPECT_EQ(run.poly(), OCPAN_MALFORMED);
  EXPECT_EQ(run.printed(), "No mask pixels in: " + run.mask_name(0) + "\n");
}

TEST(PolyFromCalibration, MissingMaskEndsTheRun) {
  table_run run(linear_camera);
  EXPECT_EQ(run.poly(), OCPAN_MALFORMED);
  EXPECT_EQ(run.printed(), "Error opening image file " + run.mask_name(0) + "\n");
}

TEST(PolyFromCalibration, MaskOfAnotherSizeEndsTheRun) {
  table_run run(linear_camera);
  run.set_mask(0, 255, 200, 99);
  EXPECT_EQ(run.poly(), OCPAN_INPUT);
  EXPECT_NE(run.printed().find("rows=99, cols=200, width=200, height=100)\n"), std::string::npos);
}

TEST(PolyFromCalibration, OutputThatCanNotBeOpenedIsThree) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  fs::create_directory(run.output_name(0));
  EXPECT_EQ(run.poly(), OCPAN_OUTPUT);
  EXPECT_EQ(run.printed(), "Error opening output file: " + run.output_name(0) + "\n");
}

#ifdef __linux__
TEST(PolyFromCalibration, FullDiskIsThree) {
  table_run run(linear_camera);
  run.set_mask(0, 255);
  fs::create_symlink("/dev/full", run.output_name(0));
  EXPECT_EQ(run.poly(), OCPAN_OUTPUT);
  EXPECT_EQ(run.printed(), "Error writing output file: " + run.output_name(0) + "\n");
}
#endif

TEST(PolyFromCalibration, ModelWithoutItsCentreIsAnUnexpectedFailure) {
  std::string camera = linear_camera;
  camera.replace(camera.find("C_1:0 "), 6, "");
  table_run run(camera);
  run.set_mask(0, 255);
  EXPECT_EQ(run.poly(), OCPAN_FAILURE);
  EXPECT_EQ(run.printed(), "Unexpected failure: invalid map<K, T> key\n");
  EXPECT_FALSE(fs::exists(run.output_name(0)));
}

TEST(PolyFromCalibration, ComponentsThatAreNoNumbersAreStoredAsZero) {
  table_run run("Width:20 Height:10\nC_0:0 C_1:0 C_2:0\n");
  run.set_mask(0, 255, 20, 10);
  EXPECT_EQ(run.poly(), OCPAN_SUCCESS);
  EXPECT_EQ(run.output(0), std::string(polygon_bytes, '\0'));
}

}  // namespace

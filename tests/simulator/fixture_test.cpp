#include "simulator/fixture.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include <Eigen/Geometry>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "calfiles/create_cal.h"
#include "model/pose.h"
#include "model/projection.h"
#include "model/rigid_rotation.h"
#include "simulator/fixture_run.h"
#include "src/result_codes.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

rig_camera turned_camera(const camera_details& details, double yaw_degrees) {
  const Eigen::Matrix3d turn = rotation_from_vector({0, yaw_degrees * pi / 180, 0});
  return {details, rotate_model(initial_model(details), turn)};
}

// Cameras at the origin, side by side in steps about y.
rig_description turned_cameras(std::size_t number, const camera_details& details, double step) {
  rig_description description;
  for (std::size_t i = 0; i < number; ++i) {
    description.cameras.push_back(turned_camera(details, step * static_cast<double>(i)));
  }
  return description;
}

fixture_description noiseless() {
  fixture_description fixture;
  fixture.noise = 0;
  fixture.vignetting = 0;
  fixture.bright = 216;  // so that plain grey is 128
  return fixture;
}

TEST(PatternMap, RoundsTheCellToAnEvenNumberOfMeridians) {
  fixture_description fixture;
  fixture.cell_degrees = 7;  // 360 / 7 is 51.4
  const pattern_map pattern(fixture);
  EXPECT_EQ(pattern.meridians(), 52);
  // 60 degrees are 8.67 lines of 360 / 52 degrees.
  EXPECT_EQ(pattern.low_line(), -9);
  EXPECT_EQ(pattern.high_line(), 9);
}

TEST(PatternMap, PutsTheEquatorAcrossThePole) {
  fixture_description fixture;
  fixture.pole = Eigen::Vector3d::UnitX();
  const pattern_map pattern(fixture);
  EXPECT_NEAR(pattern.cell_position({0, 3, 4}).y(), 0, 1e-12);
  EXPECT_NEAR(pattern.cell_position({5, 0, 0}).y(), 90 / 4.0, 1e-12);
  EXPECT_NEAR(pattern.direction(17, 0).x(), 0, 1e-12);
}

TEST(PatternMap, GoesFromPlacesToDirectionsAndBack) {
  fixture_description fixture;
  fixture.pole = Eigen::Vector3d(1, -2, 0.5).normalized();
  const pattern_map pattern(fixture);
  int checks = 0;
  for (double u = 0.5; u < pattern.meridians(); u += 3.25) {
    for (double v = -14; v <= 14; v += 2.5) {
      const Eigen::Vector2d back = pattern.cell_position(700 * pattern.direction(u, v));
      EXPECT_NEAR(back.x(), u, 1e-9);
      EXPECT_NEAR(back.y(), v, 1e-9);
      ++checks;
    }
  }
  EXPECT_EQ(checks, 28 * 12);
}

TEST(SeenOnSphere, StartsFromTheCamerasPlace) {
  const camera_details details{640, 480, 90, 0};
  model_map model = initial_model(details);
  model[C_0] = 600;
  // The middle of the picture looks along -z; 600 aside that meets a sphere of 1000 at -800.
  const Eigen::Vector2d middle(value_of(model, H_2) / -1 + 1e-9, value_of(model, V_2) / -1);
  const Eigen::Vector3d seen = seen_on_sphere(model, middle, 1000);
  EXPECT_NEAR(seen.x(), 600, 1e-5);
  EXPECT_NEAR(seen.y(), 0, 1e-5);
  EXPECT_NEAR(seen.z(), -800, 1e-5);
}

TEST(SuitableFixture, StandsAcrossARingAndCoversOneHalf) {
  const fixture_description fixture = suitable_fixture(turned_cameras(4, {640, 480, 140, 1}, 90));
  EXPECT_NEAR(fixture.pole.y(), 1, 1e-9);
  EXPECT_EQ(fixture.low_latitude_degrees, 0);
}

TEST(SuitableFixture, GoesAllRoundForTwoCameras) {
  const fixture_description fixture = suitable_fixture(turned_cameras(2, {640, 480, 120, 1}, 60));
  EXPECT_NEAR(fixture.pole.y(), 1, 1e-9);
  EXPECT_EQ(fixture.low_latitude_degrees, -60);
}

TEST(SuitableFixture, HasItsPoleBeforeTwoCamerasBackToBack) {
  const fixture_description fixture = suitable_fixture(turned_cameras(2, {640, 640, 220, 2}, 180));
  EXPECT_NEAR(fixture.pole.z(), -1, 1e-9);
}

TEST(RenderFixture, ShowsTheCellsAsTheyLieOnTheSphere) {
  const rig_camera camera = turned_camera({320, 240, 120, 1}, 20);
  const fixture_description fixture = noiseless();
  const cv::Mat1b picture = render_fixture(camera, fixture, 0);
  const pattern_map pattern(fixture);
  int bright = 0, dark = 0;
  for (int y = 0; y < 240; y += 3) {
    for (int x = 0; x < 320; x += 3) {
      const Eigen::Vector2d at = pattern.cell_position(
          seen_on_sphere(camera.model, Eigen::Vector2d(x, y), fixture.radius_mm));
      // The middle half of a cell is free of blur: a cell has 10 pixels or more.
      const double u = at.x() - std::floor(at.x()), v = at.y() - std::floor(at.y());
      if (std::abs(u - 0.5) > 0.25 || std::abs(v - 0.5) > 0.25 || std::abs(at.y()) > 10) continue;
      const bool even =
          (static_cast<int>(std::floor(at.x())) + static_cast<int>(std::floor(at.y()))) % 2 == 0;
      EXPECT_NEAR(picture(y, x), even ? fixture.bright : fixture.dark, 4) << x << ' ' << y;
      ++(even ? bright : dark);
    }
  }
  EXPECT_GT(bright, 700);
  EXPECT_GT(dark, 700);
}

TEST(RenderFixture, IsPlainOutsideThePattern) {
  fixture_description fixture = noiseless();
  fixture.low_latitude_degrees = 20;
  const cv::Mat1b picture = render_fixture(turned_camera({160, 120, 60, 0}, 0), fixture, 0);
  // 138.6 pixels per unit tangent: 20 degrees are 50 pixels above the middle.
  double lowest = 0, highest = 0;
  cv::minMaxLoc(picture.row(2), &lowest, &highest);
  EXPECT_LT(lowest, 60);
  EXPECT_GT(highest, 195);
  EXPECT_EQ(cv::countNonZero(picture.rowRange(14, 120) != 128), 0);
}

TEST(RenderFixture, IsBlackOutsideTheCircleOfLens2) {
  const cv::Mat1b picture = render_fixture(turned_camera({200, 200, 220, 2}, 0), noiseless(), 0);
  int outside = 0;
  for (int y = 0; y < 200; ++y) {
    for (int x = 0; x < 200; ++x) {
      if (std::hypot(x - 100, y - 100) > 101) {
        EXPECT_EQ(picture(y, x), 0);
        ++outside;
      } else if (std::hypot(x - 100, y - 100) < 99) {
        EXPECT_GT(picture(y, x), 20);
      }
    }
  }
  EXPECT_GT(outside, 7000);
}

TEST(RenderFixture, LosesLightTowardsTheCorners) {
  fixture_description fixture = noiseless();
  fixture.low_latitude_degrees = 60;  // nothing but plain grey
  fixture.vignetting = 0.5;
  const cv::Mat1b picture = render_fixture(turned_camera({161, 121, 60, 0}, 0), fixture, 0);
  EXPECT_EQ(picture(60, 80), 128);
  EXPECT_NEAR(picture(0, 0), 64, 1);
}

TEST(RenderFixture, HasNoiseOfItsOwnInEachStream) {
  fixture_description fixture = noiseless();
  fixture.low_latitude_degrees = 60;
  fixture.noise = 3;
  const rig_camera camera = turned_camera({160, 120, 60, 0}, 0);
  const cv::Mat1b first = render_fixture(camera, fixture, 0);
  const cv::Mat1b second = render_fixture(camera, fixture, 1);
  EXPECT_EQ(cv::norm(first, render_fixture(camera, fixture, 0)), 0);
  cv::Scalar mean, deviation;
  cv::meanStdDev(cv::Mat1d(first) - cv::Mat1d(second), mean, deviation);
  EXPECT_NEAR(deviation[0], 3 * std::sqrt(2), 0.1);
}

TEST(FixtureCorners, LieWhereTheCornersOfTheCellsProject) {
  const rig_camera camera = turned_camera({640, 480, 120, 1}, 30);
  const fixture_description fixture;
  const pattern_map pattern(fixture);
  const auto corners = fixture_corners(camera, fixture);
  EXPECT_GT(corners.size(), 300u);
  std::set<std::pair<int, int>> names;
  for (const fixture_corner& corner : corners) {
    names.insert({corner.line, corner.meridian});
    const Eigen::Vector2d at =
        pattern.cell_position(seen_on_sphere(camera.model, corner.pixel, fixture.radius_mm));
    EXPECT_NEAR(std::remainder(at.x() - corner.meridian, pattern.meridians()), 0, 1e-6);
    EXPECT_NEAR(at.y(), corner.line, 1e-6);
  }
  EXPECT_EQ(names.size(), corners.size());
}

TEST(FixtureCorners, OfAnEquatorCrossAtRightAnglesAheadOfTheCamera) {
  fixture_description fixture;
  fixture.cell_degrees = 5;
  const auto corners = fixture_corners(turned_camera({1000, 800, 90, 0}, 0), fixture);
  // Ahead 500 pixels per unit tangent: 5 degrees are about 43.7 pixels.
  const auto nearest = std::min_element(corners.begin(), corners.end(), [](auto& a, auto& b) {
    return (a.pixel - Eigen::Vector2d(500, 400)).norm() <
           (b.pixel - Eigen::Vector2d(500, 400)).norm();
  });
  ASSERT_NE(nearest, corners.end());
  EXPECT_NEAR(nearest->crossing_degrees, 90, 0.01);
  EXPECT_NEAR(nearest->shortest_side, 43.6, 0.2);
  EXPECT_NEAR(nearest->inside, 399, 1.5);
}

TEST(FixtureCorners, AreFoundBeyondTheHalfSphereOfAWideLens) {
  const rig_camera camera = turned_camera({640, 640, 218, 2}, 0);
  fixture_description fixture;
  fixture.pole = -Eigen::Vector3d::UnitZ();
  const auto corners = fixture_corners(camera, fixture);
  // The lens sees 19 degrees beyond the equator, more than four lines.
  const auto lowest = std::min_element(corners.begin(), corners.end(),
                                       [](auto& a, auto& b) { return a.line < b.line; });
  ASSERT_NE(lowest, corners.end());
  EXPECT_EQ(lowest->line, -4);
  EXPECT_EQ(std::count_if(corners.begin(), corners.end(), [](auto& c) { return c.line == -4; }),
            90);
}

TEST(DisturbedModels, LeaveTheFirstCameraAlone) {
  const rig truth = models_of(turned_cameras(4, {640, 480, 140, 1}, 90));
  EXPECT_EQ(disturbed_models(truth, {}).front(), truth.front());
}

TEST(DisturbedModels, DisagreeByTheAngleToldAtMost) {
  const rig truth = models_of(turned_cameras(5, {640, 480, 140, 1}, 72));
  const rig disturbed = disturbed_models(truth, {1.5, 0, 0, 7});
  double widest = 0;
  std::vector<Eigen::Matrix3d> turns;
  for (std::size_t i = 0; i < truth.size(); ++i) {
    Eigen::Matrix3d before, after;
    before << vector_of(truth[i], H_0), vector_of(truth[i], V_0),
        vector_of(truth[i], H_0).cross(vector_of(truth[i], V_0));
    after << vector_of(disturbed[i], H_0), vector_of(disturbed[i], V_0),
        vector_of(disturbed[i], H_0).cross(vector_of(disturbed[i], V_0));
    turns.push_back(after * before.inverse());
    for (const Eigen::Matrix3d& other : turns) {
      const Eigen::AngleAxisd between(Eigen::Matrix3d(turns.back() * other.transpose()));
      widest = std::max(widest, between.angle() * 180 / pi);
    }
  }
  EXPECT_NEAR(widest, 1.5, 0.01);
}

TEST(DisturbedModels, AreMovedAndScaledALittle) {
  const rig truth = models_of(turned_cameras(2, {640, 480, 140, 1}, 90));
  const rig disturbed = disturbed_models(truth, {0, 0.2, 0.01, 3});
  const double moved = (vector_of(disturbed[1], C_0) - vector_of(truth[1], C_0)).norm();
  const double scaled = vector_of(disturbed[1], V_0).norm() / vector_of(truth[1], V_0).norm();
  EXPECT_GT(moved, 0.01);
  EXPECT_LE(moved, 0.2 * std::sqrt(3));
  EXPECT_GT(std::abs(scaled - 1), 0.0001);
  EXPECT_LE(std::abs(scaled - 1), 0.01);
}

TEST(WorstSeam, OfTheTruthIsNone) {
  const rig_description description = turned_cameras(3, {640, 480, 140, 1}, 90);
  EXPECT_NEAR(worst_seam_degrees(models_of(description), description, {}), 0, 1e-6);
}

TEST(WorstSeam, OfACameraTurnedAboutThePoleIsTheAngleTimesTheCosineOfTheLatitude) {
  const rig_description description = turned_cameras(2, {640, 480, 140, 1}, 60);
  rig models = models_of(description);
  models[1] = rotate_model(models[1], rotation_from_vector({0, 0.5 * pi / 180, 0}));
  fixture_description equator;
  equator.low_latitude_degrees = -4;  // the line of latitude 0 alone bears corners
  equator.high_latitude_degrees = 4;
  EXPECT_NEAR(worst_seam_degrees(models, description, equator), 0.5, 1e-6);
}

TEST(WriteFixture, WritesPicturesAndCalibrations) {
  const testing::temp_folder folder;
  const rig_description description = turned_cameras(2, {320, 240, 120, 1}, 60);
  fixture_files files;
  ASSERT_EQ(write_fixture(files, folder.path().string(), description, {}, {}), "");
  ASSERT_EQ(files.pictures.size(), 2u);
  for (const std::string& name : files.pictures) {
    EXPECT_EQ(cv::imread(name, cv::IMREAD_UNCHANGED).size(), cv::Size(320, 240)) << name;
  }
  for (const std::string& name : {files.true_calibration, files.disturbed_calibration}) {
    std::unique_ptr<cal> loaded;
    EXPECT_EQ(create_cal(loaded, name.c_str(), true, 1000.0F), code::success);
    EXPECT_EQ(loaded->cam_count(), 2u);
  }
}

TEST(WriteFixture, TellsWhatItCannotWrite) {
  const testing::temp_folder folder;
  fixture_files files;
  const std::string missing = folder.file("missing");
  EXPECT_EQ(write_fixture(files, missing, turned_cameras(2, {64, 48, 120, 1}, 60), {}, {}),
            "can't write " + missing + "/true.txt");
}

}  // namespace
}  // namespace ocpan

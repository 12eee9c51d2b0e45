#include "production/production_report.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// Sees (X, Y, Z) at (100 X / Z + 50, 100 Y / Z + 40): a linear camera along +z.
model_map linear_camera() {
  return {{H_0, 100}, {H_2, 50}, {V_1, 100}, {V_2, 40}, {O_th, 0.3}, {L, 1}};
}

pair_measurement measurement(std::size_t first, std::size_t second,
                             const std::vector<Eigen::Vector3d>& features,
                             const std::vector<Eigen::Vector2d>& off_first,
                             const std::vector<Eigen::Vector2d>& off_second) {
  pair_measurement made{{first, second}, Eigen::Matrix3Xd::Zero(3, 1), {}, {}};
  for (std::size_t k = 0; k < features.size(); ++k) {
    const Eigen::Vector3d& p = features[k];
    const Eigen::Vector2d pixel(100 * p.x() / p.z() + 50, 100 * p.y() / p.z() + 40);
    made.shots.push_back({pixel + off_first[k], pixel + off_second[k]});
    made.poses.push_back({Eigen::Vector3d::Zero(), p});
  }
  return made;
}

TEST(MeasureReprojection, CountsEachFeatureOncePerCamera) {
  const rig models(3, linear_camera());
  prod_measures measures;
  measure_reprojection(
      measures, models,
      {measurement(0, 1, {{3, 4, 12}, {0, 3, 4}}, {{3, 4}, {0, 1}}, {{0, 2}, {0, 0}}),
       measurement(1, 2, {{1, 2, 2}}, {{1, 0}}, {{6, 8}})});
  // Pair 0: errors 5, 2, 1, 0; radii 13 and 5. Pair 1: errors 1 and 10; radius 3.
  EXPECT_EQ(measures.pair_count, (std::vector<std::int32_t>{4, 2}));
  EXPECT_NEAR(measures.pair_reprojection_mean[0], 2, 1e-9);
  EXPECT_NEAR(measures.pair_reprojection_mean[1], 5.5, 1e-9);
  EXPECT_NEAR(measures.pair_reprojection_max[0], 5, 1e-9);
  EXPECT_NEAR(measures.pair_reprojection_max[1], 10, 1e-9);
  EXPECT_EQ(measures.pair_radius_min, (std::vector<double>{5, 3}));
  EXPECT_EQ(measures.pair_radius_max, (std::vector<double>{13, 3}));
  EXPECT_EQ(measures.point_count, 6u);
  EXPECT_NEAR(measures.reprojection_mean, 19.0 / 6, 1e-9);
  EXPECT_NEAR(measures.reprojection_max, 10, 1e-9);
  EXPECT_EQ(measures.radius_min, 3);
  EXPECT_EQ(measures.radius_max, 13);
}

TEST(MeasureReprojection, TakesTheSecondCamerasOwnModel) {
  rig models(2, linear_camera());
  models[1][H_2] += 7;
  prod_measures measures;
  measure_reprojection(measures, models, {measurement(0, 1, {{0.5, 0, 1}}, {{0, 0}}, {{0, 0}})});
  EXPECT_NEAR(measures.reprojection_max, 7, 1e-9);
  EXPECT_NEAR(measures.reprojection_mean, 3.5, 1e-9);
}

TEST(MeasureReprojection, LeavesInfinitiesWithoutAnySample) {
  prod_measures measures;
  measure_reprojection(measures, {}, {});
  EXPECT_EQ(measures.point_count, 0u);
  EXPECT_TRUE(std::isnan(measures.reprojection_mean));
  EXPECT_EQ(measures.reprojection_max, -infinity);
  EXPECT_EQ(measures.radius_min, infinity);
  EXPECT_EQ(measures.radius_max, -infinity);
  EXPECT_TRUE(measures.pair_count.empty());
}

TEST(MeasureReprojection, LeavesInfinitiesForAPairWithoutSamples) {
  prod_measures measures;
  measure_reprojection(measures, rig(2, linear_camera()), {measurement(0, 1, {}, {}, {})});
  EXPECT_EQ(measures.pair_count, (std::vector<std::int32_t>{0}));
  EXPECT_EQ(measures.pair_reprojection_mean[0], infinity);
  EXPECT_EQ(measures.pair_reprojection_max[0], -infinity);
  EXPECT_EQ(measures.pair_radius_min[0], infinity);
  EXPECT_EQ(measures.pair_radius_max[0], -infinity);
}

TEST(MeasureDeltas, CountsMovesInCells) {
  sphere_points before(3, 2), after(3, 2);
  before << 0, 10, 0, 10, 0, 10;
  after << 3, 10, 4, 10, 0, 22;  // moved by 5 and by 12
  const sphere_points one = Eigen::Vector3d(0, 0, 0);
  const sphere_points moved = Eigen::Vector3d(0, 1, 0);
  const sphere_points none(3, 0);
  prod_measures measures;
  measure_deltas(measures, {before, one, none}, {after, moved, none}, 2);
  EXPECT_EQ(measures.cam_delta_mean, (std::vector<double>{17.0 / 4, 0.5, infinity}));
  EXPECT_EQ(measures.cam_delta_max, (std::vector<double>{6, 0.5, 0}));
  EXPECT_EQ(measures.delta_mean, 18.0 / 6);
  EXPECT_EQ(measures.delta_max, 6);
}

prod_measures sample_measures() {
  prod_measures m;
  m.radius_min = 987.654321;
  m.radius_max = 1012.5;
  m.reprojection_max = 0.5;
  m.reprojection_mean = 0.123456789;
  m.point_count = 4321;
  m.delta_mean = 0.25;
  m.delta_max = 1.5;
  m.pair_count = {10, 0};
  m.pair_radius_min = {990, infinity};
  m.pair_radius_max = {1010, -infinity};
  m.pair_reprojection_max = {0.75, -infinity};
  m.pair_reprojection_mean = {0.0625, infinity};
  m.cam_delta_mean = {0.125, infinity};
  m.cam_delta_max = {2, 0};
  return m;
}

TEST(ProductionReport, HoldsAllMeasuresWithRadiiInMetres) {
  const testing::working_folder folder;
  std::filesystem::create_directory("tmp");
  testing::write_file("tmp/Prod_QA_Measures.txt", std::string(5000, 'x'));
  write_production_report(sample_measures(), 2);
  EXPECT_EQ(testing::read_text("tmp/Prod_QA_Measures.txt"),
            "Camera Number : 2\n"
            "Calibration Sets Number : 2\n"
            "\n"
            " ---------Total QA Measures--------- \n"
            "Average Reprojection Error : 0.123457\n"
            "Maximum Reprojection Error : 0.5\n"
            "Matched Point Count        : 4321\n"
            "Minimum Point Radius       : 0.987654\n"
            "Maximum Point Radius       : 1.0125\n"
            "Average Feature Delta      : 0.25\n"
            "Maximum Feature Delta      : 1.5\n"
            "\n"
            " ---------Each QA Measures--------- \n"
            "----Pair 0\n"
            "    Average Reprojection Error : 0.0625\n"
            "    Maximum Reprojection Error : 0.75\n"
            "    Matched Point Count        : 10\n"
            "    Minimum Point Radius       : 0.99\n"
            "    Maximum Point Radius       : 1.01\n"
            "\n"
            "----Pair 1\n"
            "    Average Reprojection Error : inf\n"
            "    Maximum Reprojection Error : -inf\n"
            "    Matched Point Count        : 0\n"
            "    Minimum Point Radius       : inf\n"
            "    Maximum Point Radius       : -inf\n"
            "\n"
            "----Cam 0\n"
            "    Average Feature Delta      : 0.125\n"
            "    Maximum Feature Delta      : 2\n"
            "\n"
            "----Cam 1\n"
            "    Average Feature Delta      : inf\n"
            "    Maximum Feature Delta      : 0\n"
            "\n");
}

TEST(ProductionReport, IsLostWithoutAWordIfItCannotBeWritten) {
  const testing::working_folder folder;
  EXPECT_EQ(testing::printed_by([] { write_production_report(sample_measures(), 2); }), "");
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

}  // namespace
}  // namespace ocpan

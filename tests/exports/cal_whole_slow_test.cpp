#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

#include "calfiles/create_cal.h"
#include "calfiles/selen360_cal_file.h"
#include "simulator/board_series.h"
#include "simulator/compare_rigs.h"
#include "simulator/presets.h"
#include "simulator/rig_description.h"
#include "tests/exports/cal_fixture.h"

namespace ocpan {
namespace {

using testing::read_file;

// Two small rectilinear cameras side by side with three short series.
rig_description small_rig() {
  rig_description description;
  for (int c = 0; c < 2; ++c) {
    rig_camera camera;
    camera.details = {480, 360, 70, 0};
    camera.model = initial_model(camera.details);
    camera.model[H_0] *= 1.008;
    camera.model[V_1] *= 1.008;
    camera.model[C_0] = 60 * c;
    description.cameras.push_back(camera);
  }
  description.sets = {{"one", {0}, 5}, {"two", {1}, 5}, {"both", {0, 1}, 5}};
  description.poses.max_distance = 500;
  return description;
}

class WholeCal : public testing::Cal {
 protected:
  void shoot(const rig_description& description) {
    ASSERT_EQ(write_board_series(description, folder.file("series"), {}), "");
  }
  int run_series() { return run(folder.file("series/calibration.txt")); }
};

TEST_F(WholeCal, CalibratesASimulatedRig) {
  const rig_description truth = small_rig();
  std::filesystem::create_directory("tmp");
  shoot(truth);
  ASSERT_EQ(run_series(), OCPAN_SUCCESS);
  EXPECT_EQ(summary.matched_point_count, 54 * 20);
  EXPECT_LT(summary.average_reprojection_error, 0.15);
  EXPECT_GE(summary.max_reprojection_error, summary.average_reprojection_error);
  EXPECT_GE(summary.total_dist_ratio, summary.minimum_dist_ratio);

  // The steps in their order.
  std::size_t at = 0;
  for (const char* line :
       {"OpenCV version : 3.4.0\n", "\n-----------Step 1. Chessboard detection-----------\n\n",
        "This cal_frame_set_number: 5\n",
        "detect .\\tmp\\one_vid_0_0.jpg chessboard successfully \n",
        "detect .\\tmp\\both_vid_1_4.jpg chessboard successfully \n",
        "\n-----------Step 2. Initial lens calibration-----------\n\n",
        "\n-----------Step 2-1. Optimise parameters-----------\n\n",
        "\n-----------Step 3. Estimate and then refine camera pose-----------\n\n",
        "\n-----------Step 4. Full re-optimisation-----------\n\n", "total group : 3\n",
        "5 board to be calculated in 0 group!\n5 board to be calculated in 1 group!\n"
        "5 board to be calculated in 2 group!\n"
        "\n-----------Model calibration finished!-----------\n"}) {
    at = printed.find(line, at);
    ASSERT_NE(at, std::string::npos) << line;
  }
  EXPECT_TRUE(std::filesystem::exists("tmp/one_vid_0_0.jpg"));
  EXPECT_TRUE(std::filesystem::exists("tmp/both_vid_1_4.jpg"));

  // The file goes back through the factory; camera 1 is where it was.
  const std::string found = folder.file("series/found.cal");
  std::unique_ptr<cal> created;
  ASSERT_EQ(create_cal(created, found.c_str(), true, 1.0f), 0);
  EXPECT_EQ(created->cam_count(), 2u);
  selen360_cal_file file(1);
  ASSERT_EQ(file.load(found.c_str()), 0);
  EXPECT_EQ(file.models()[0].size(), 18u);
  EXPECT_NEAR(file.models()[1].at(C_0), 60, 1.0);
  EXPECT_EQ(file.models()[0].at(C_0), 0);

  // The text report holds the summary in the default format.
  std::ostringstream expected;
  expected << "Average Reprojection Error : " << summary.average_reprojection_error
           << "\nMaximum Reprojection Error : " << summary.max_reprojection_error
           << "\nMatched Point Count        : 1080\nTotal Dist Ratio           : "
           << summary.total_dist_ratio
           << "\nMinimum Dist Ratio         : " << summary.minimum_dist_ratio << "\n";
  EXPECT_NE(read_file(found + "_QA_Measures.txt").find(expected.str()), std::string::npos);
  EXPECT_EQ(read_file(found + "_distance.csv").rfind("----Cam 0----,,,,----Cam 1----,,,,", 0), 0u);
}

TEST_F(WholeCal, GivesTheSameFilesAgainAndWithoutTheDebugFolder) {
  shoot(small_rig());
  ASSERT_EQ(run_series(), OCPAN_SUCCESS);
  const std::string first = read_file("series/found.cal");
  const std::string table = read_file("series/found.cal_distance.csv");
  EXPECT_FALSE(std::filesystem::exists("tmp"));
  std::filesystem::create_directory("tmp");
  ASSERT_EQ(run_series(), OCPAN_SUCCESS);
  EXPECT_EQ(read_file("series/found.cal"), first);
  EXPECT_EQ(read_file("series/found.cal_distance.csv"), table);
  EXPECT_FALSE(first.empty());
}

TEST_F(WholeCal, LosesOnlyTheFramesThatFail) {
  rig_description faulty = small_rig();
  faulty.faults = {{picture_fault::missing_board, 0, 0, 2},
                   {picture_fault::truncated_file, 2, 1, 1},
                   {picture_fault::truncated_file, 2, 0, 3}};
  std::filesystem::create_directory("tmp");
  shoot(faulty);
  ASSERT_EQ(run_series(), OCPAN_SUCCESS);
  // One board missed; frame 1 of the pair keeps camera 1's view, frame 3 loses both.
  EXPECT_EQ(summary.matched_point_count, 54 * (4 + 5 + 3 * 2 + 1));
  EXPECT_TRUE(has_line("detect .\\tmp\\one_vid_0_2.jpg chessboard failed"));
  EXPECT_TRUE(std::filesystem::exists("tmp/one_vid_0_2.jpg"));
  // The pair's set holds two groups: camera 0 alone, and both.
  EXPECT_TRUE(has_line("total group : 4"));
  EXPECT_TRUE(has_line("1 board to be calculated in 2 group!"));
  EXPECT_TRUE(has_line("3 board to be calculated in 3 group!"));
}

// --- simulated rigs with known truth ---

struct rig_limits {
  const char* preset;
  double degrees;   // most rotation of any camera against the truth
  double position;  // most shift of any camera, unit of the board's square
};

class SimulatedRig : public WholeCal, public ::testing::WithParamInterface<rig_limits> {};

TEST_P(SimulatedRig, ComesBackWithinItsLimits) {
  const rig_limits limits = GetParam();
  rig_description truth;
  ASSERT_EQ(make_preset(truth, limits.preset), "");
  shoot(truth);
  ASSERT_EQ(run_series(), OCPAN_SUCCESS);
  selen360_cal_file file(1);
  ASSERT_EQ(file.load(folder.file("series/found.cal").c_str()), 0);
  const auto differences = compare_rigs(file.models(), models_of(truth), details_of(truth));
  ASSERT_EQ(differences.size(), truth.cameras.size());
  double degrees = 0, position = 0, mapping = 0;
  for (const camera_difference& camera : differences) {
    degrees = std::max(degrees, camera.rotation_degrees);
    position = std::max(position, camera.position);
    mapping = std::max(mapping, camera.mapping_pixels);
  }
  std::printf("%-16s worst camera %.4f degrees, %.3f units, %.3f pixels; residual %.4f pixels\n",
              limits.preset, degrees, position, mapping, summary.average_reprojection_error);
  EXPECT_LT(degrees, limits.degrees);
  EXPECT_LT(position, limits.position);
}

INSTANTIATE_TEST_SUITE_P(Presets, SimulatedRig,
                         ::testing::Values(rig_limits{"3-lens0", 0.01, 0.3},
                                           rig_limits{"4-lens1", 0.01, 0.5},
                                           rig_limits{"4-lens1-off-axis", 0.02, 1.0},
                                           rig_limits{"8-lens1", 0.04, 1.0},
                                           rig_limits{"2-lens2", 0.01, 0.5}),
                         [](const auto& one) {
                           std::string name = one.param.preset;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

// Cameras that differ from one another are pulled together by the ties of their kind, and
// the last stage seldom leaves where the rig stage ended: some tenths of a degree are what
// the sequence reaches.
TEST_F(WholeCal, RunsToItsEndWithLensesThatDiffer) {
  for (const char* preset : {"2-lens1-unlike", "3-lens0-unlike", "4-lens1-unlike"}) {
    rig_description truth;
    ASSERT_EQ(make_preset(truth, preset), "");
    shoot(truth);
    ASSERT_EQ(run_series(), OCPAN_SUCCESS);
    selen360_cal_file file(1);
    ASSERT_EQ(file.load(folder.file("series/found.cal").c_str()), 0);
    double degrees = 0;
    for (const auto& camera : compare_rigs(file.models(), models_of(truth), details_of(truth))) {
      degrees = std::max(degrees, camera.rotation_degrees);
    }
    std::printf("%-16s worst camera %.4f degrees; residual %.4f pixels\n", preset, degrees,
                summary.average_reprojection_error);
    EXPECT_LT(degrees, 1.0);
  }
}

}  // namespace
}  // namespace ocpan

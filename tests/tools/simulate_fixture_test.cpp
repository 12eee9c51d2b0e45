#include <filesystem>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "simulator/rig_json.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;

// Two cameras with pictures that take no time.
void write_small_rig(const temp_folder& folder) {
  rig_description rig;
  for (const double yaw : {0.0, 1.0}) {
    const camera_details details{160, 120, 120, 1};
    model_map model =
        rotate_model(initial_model(details), rotation_from_vector(Eigen::Vector3d(0, yaw, 0)));
    model[LAMBDA] = lambda_from_law(model[L]);
    rig.cameras.push_back({details, model});
  }
  write_file(folder.file("rig.json"), rig_to_json(rig));
}

tool_run fixture_with(const temp_folder& folder, const std::string& options) {
  return run_here("simulate fixture " + folder.file("rig.json") + " " + folder.file("made") + " " +
                  options);
}

TEST(SimulateFixture, WritesPicturesAndBothCalibrations) {
  const temp_folder folder;
  write_small_rig(folder);
  const tool_run run = fixture_with(folder, "");
  EXPECT_EQ(run.code, 0) << run.err;
  for (const char* name :
       {"made/fixture_1.png", "made/fixture_2.png", "made/true.txt", "made/disturbed.txt"}) {
    EXPECT_TRUE(std::filesystem::exists(folder.file(name))) << name;
    EXPECT_NE(run.out.find(folder.file(name) + "\n"), std::string::npos) << name;
  }
  EXPECT_NE(run.out.find("Its worst seam         "), std::string::npos);
}

TEST(SimulateFixture, LeavesTheCalibrationAloneIfNothingIsDisturbed) {
  const temp_folder folder;
  write_small_rig(folder);
  EXPECT_EQ(fixture_with(folder, "--turn 0 --move 0 --scale 0").code, 0);
  EXPECT_EQ(read_file(folder.file("made/true.txt")), read_file(folder.file("made/disturbed.txt")));
  EXPECT_EQ(fixture_with(folder, "--turn 0.5 --move 0 --scale 0").code, 0);
  EXPECT_NE(read_file(folder.file("made/true.txt")), read_file(folder.file("made/disturbed.txt")));
}

TEST(SimulateFixture, PaintsThePatternAsTold) {
  const temp_folder folder;
  write_small_rig(folder);
  EXPECT_EQ(fixture_with(folder, "--cell 20 --dark 100 --bright 120 --noise 0 --vignetting 0").code,
            0);
  double lowest = 0, highest = 0;
  cv::minMaxLoc(cv::imread(folder.file("made/fixture_1.png"), cv::IMREAD_GRAYSCALE), &lowest,
                &highest);
  EXPECT_EQ(lowest, 100);
  EXPECT_EQ(highest, 120);
}

TEST(SimulateFixture, RefusesAValueOutOfRange) {
  const temp_folder folder;
  write_small_rig(folder);
  EXPECT_EQ(fixture_with(folder, "--radius 0.1").code, 64);
  EXPECT_EQ(fixture_with(folder, "--cell 0").code, 64);
  EXPECT_FALSE(std::filesystem::exists(folder.file("made")));
}

TEST(SimulateFixture, TellsOfADescriptionThatIsNotThere) {
  const temp_folder folder;
  const tool_run run = fixture_with(folder, "");
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.err.find("write a new one with oc_pan simulate preset"), std::string::npos);
}

TEST(SimulateFixture, TellsOfAFileInPlaceOfTheFolder) {
  const temp_folder folder;
  write_small_rig(folder);
  write_file(folder.file("made"), "");
  EXPECT_EQ(fixture_with(folder, "").code, 3);
}

}  // namespace
}  // namespace ocpan

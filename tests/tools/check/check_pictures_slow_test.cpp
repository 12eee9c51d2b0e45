#include <filesystem>

#include <gtest/gtest.h>

#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "simulator/board_series.h"
#include "simulator/presets.h"
#include "tests/support/temp_folder.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

namespace fs = std::filesystem;

using testing::run_here;
using testing::temp_folder;
using testing::tool_run;

rig_description four_cameras(int frames) {
  rig_description rig;
  EXPECT_EQ(make_preset(rig, "4-lens0"), "");
  for (series_description& series : rig.sets) series.frames = frames;
  return rig;
}

// Two cameras with small pictures.
rig_description two_cameras(int frames) {
  rig_description rig;
  EXPECT_EQ(make_preset(rig, "2-lens0"), "");
  for (rig_camera& camera : rig.cameras) {
    camera.details.width /= 2;
    camera.details.height /= 2;
    for (const parameter_name key : {H_0, H_1, H_2, V_0, V_1, V_2}) camera.model[key] /= 2;
  }
  for (series_description& series : rig.sets) series.frames = frames;
  rig.poses.max_distance = 500;
  return rig;
}

tool_run checked(const rig_description& rig, const temp_folder& folder) {
  EXPECT_EQ(write_board_series(rig, folder.path().string(), {}), "");
  return run_here("check " + folder.file("calibration.txt"));
}

bool says(const tool_run& run, const std::string& text) {
  return run.out.find(text) != std::string::npos;
}

TEST(CheckOfPictures, FindsASoundRigWithoutFault) {
  const temp_folder folder;
  const tool_run run = checked(four_cameras(8), folder);
  EXPECT_FALSE(says(run, "unusable:")) << run.out;
  EXPECT_TRUE(says(run, "Connected parts: 1 (1 2 3 4)")) << run.out;
}

TEST(CheckOfPictures, NamesTheMissingLinkOfARigWhosePairSetsDoNotConnect) {
  const temp_folder folder;
  rig_description rig = four_cameras(6);
  for (series_description& series : rig.sets) {
    if (series.name == "pair12") series = {"again", {0}, 6};
  }
  const tool_run run = checked(rig, folder);
  EXPECT_EQ(run.code, 11) << run.out;
  EXPECT_TRUE(says(run, "Connected parts: 2 (1 3 | 2 4)")) << run.out;
  EXPECT_TRUE(says(run, "shoot a set with the board before cameras 1 and 2 at once")) << run.out;
}

TEST(CheckOfPictures, NamesTheFramesOfAShuffledSeries) {
  const temp_folder folder;
  const rig_description rig = two_cameras(8);
  ASSERT_EQ(write_board_series(rig, folder.path().string(), {}), "");
  const fs::path set = folder.path() / "pictures" / "pair12";
  fs::rename(set / "cam2_02.png", set / "kept");
  fs::rename(set / "cam2_05.png", set / "cam2_02.png");
  fs::rename(set / "kept", set / "cam2_05.png");
  const tool_run run = run_here("check " + folder.file("calibration.txt"));
  EXPECT_EQ(run.code, 11) << run.out;
  EXPECT_TRUE(says(run, "set pair12: the pictures of cameras 1 and 2")) << run.out;
  EXPECT_TRUE(says(run, "frames 2, 5 (the first: cam1_02.png and cam2_02.png)")) << run.out;
}

TEST(CheckOfPictures, NamesTheBoardThatStandsInThePicturesInstead) {
  const temp_folder folder;
  ASSERT_EQ(write_board_series(two_cameras(4), folder.path().string(), {}), "");
  std::string text = testing::read_file(folder.file("calibration.txt"));
  const std::string told = "board_shape: [9, 6]";
  for (std::size_t at = 0; (at = text.find(told)) != text.npos;) {
    text.replace(at, told.size(), "board_shape: [7, 6]");
  }
  testing::write_file(folder.file("calibration.txt"), text);
  const tool_run run = run_here("check " + folder.file("calibration.txt"));
  EXPECT_EQ(run.code, 11) << run.out;
  EXPECT_TRUE(says(run, "the board of these pictures looks like 9 by 6")) << run.out;
  for (const auto& entry : fs::recursive_directory_iterator(folder.path())) {
    EXPECT_EQ(entry.path().string().find("_corners.json"), std::string::npos);
  }
}

TEST(CheckOfPictures, NamesBoardsThatTheDetectorCountsFromDifferentEnds) {
  const temp_folder folder;
  rig_description rig = two_cameras(8);
  rig.board.width = 8;
  // Camera 2 hangs upside down; rotate_model turns about the rig's origin, so the centre stays.
  model_map& model = rig.cameras[1].model;
  const Eigen::Vector3d centre = vector_of(model, C_0);
  const Eigen::Vector3d axis = direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
  model = rotate_model(model, rotation_from_vector(pi * axis));
  model[C_0] = centre.x();
  model[C_1] = centre.y();
  model[C_2] = centre.z();
  const tool_run run = checked(rig, folder);
  EXPECT_EQ(run.code, 11) << run.out;
  EXPECT_TRUE(says(run, "a board of 8 by 6 looks the same after half a turn")) << run.out;
  EXPECT_TRUE(says(run,
                   "set pair12: cameras 1 and 2 count the board's corners from different ends, "
                   "turned by a half"))
      << run.out;
}

}  // namespace
}  // namespace ocpan

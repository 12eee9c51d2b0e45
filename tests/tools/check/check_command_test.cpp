#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "simulator/board_series.h"
#include "simulator/presets.h"
#include "tests/support/temp_folder.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;

// A small rig of two cameras with few frames.
rig_description small_rig() {
  rig_description rig;
  EXPECT_EQ(make_preset(rig, "2-lens0"), "");
  for (rig_camera& camera : rig.cameras) {
    camera.details = {480, 360, 80, 0};
    for (const parameter_name key : {H_0, H_1, H_2, V_0, V_1, V_2}) camera.model[key] /= 2;
  }
  for (series_description& series : rig.sets) series.frames = series.cameras.size() == 2 ? 2 : 1;
  rig.poses.max_distance = 500;
  rig.rendering.format = "jpg";
  return rig;
}

TEST(CheckCommand, NamesATruncatedPictureAndKeepsTheCorners) {
  const temp_folder folder;
  rig_description rig = small_rig();
  rig.faults.push_back({picture_fault::truncated_file, 2, 1, 1});
  ASSERT_EQ(write_board_series(rig, folder.path().string(), {}), "");
  const std::string json = folder.file("check.json");
  const tool_run run = run_here("check " + folder.file("calibration.txt") + " --json " + json);
  EXPECT_EQ(run.code, 10) << run.out << run.err;
  EXPECT_NE(run.out.find("cam2_01.jpg is cut short: the JPEG's end marker is missing"),
            std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find("Verdict: doubtful"), std::string::npos);
  EXPECT_NE(read_file(folder.file("found.cal_corners.json")), "");
  const auto read = nlohmann::json::parse(read_file(json));
  EXPECT_EQ(read["verdict"], "doubtful");
  EXPECT_EQ(read["exit_code"], 10);
  EXPECT_EQ(read["cameras"].size(), 2u);
  EXPECT_EQ(read["cameras"][1]["cut_short"], 1);
  EXPECT_EQ(read["shared_boards"][0][0], 3);
  EXPECT_EQ(read["parts"][0], (std::vector<int>{1, 2}));
}

TEST(CheckCommand, CallsUnusableWhatTheLibraryRefusesWithTheLibrarysLine) {
  const temp_folder folder;
  write_file(folder.path() / "rig.txt", "camera_info:\n  - width: 5, heigth: 5\n");
  const tool_run run = run_here("check " + folder.file("rig.txt"));
  EXPECT_EQ(run.code, 11);
  EXPECT_NE(run.out.find("rig.txt:2:15: \"heigth\" is no key of a camera"), std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find("The library says: Unrecognised camera_info:  heigth"), std::string::npos)
      << run.out;
}

TEST(CheckCommand, TellsOfAConfigurationThatIsNotThere) {
  const tool_run run = run_here("check nowhere.txt");
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.err.find("nowhere.txt can't be opened"), std::string::npos);
  EXPECT_EQ(run_here("check").code, 64);
}

TEST(CheckCommand, DoesNotOverwriteItsInput) {
  const temp_folder folder;
  write_file(folder.path() / "rig.txt", "camera_info:\n");
  const std::string file = folder.file("rig.txt");
  EXPECT_EQ(run_here("check " + file + " --json " + file).code, 3);
  EXPECT_EQ(read_file(file), "camera_info:\n");
}

}  // namespace
}  // namespace ocpan

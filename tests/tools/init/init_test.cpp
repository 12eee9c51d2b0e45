#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "simulator/board_series.h"
#include "simulator/presets.h"
#include "src/file_patterns.h"
#include "tests/support/temp_folder.h"
#include "tests/tools/tool_process.h"
#include "tools/boards/rig_pictures.h"
#include "tools/init/init_text.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;

// Makes empty pictures: their names alone decide how series and cameras are told apart.
void touch(const temp_folder& folder, const std::string& before, const std::vector<int>& numbers,
           const std::string& after) {
  for (const int number : numbers) {
    const auto path =
        folder.path() / (before + (number < 10 ? "0" : "") + std::to_string(number) + after);
    std::filesystem::create_directories(path.parent_path());
    write_file(path, "");
  }
}

std::vector<picture_series> series_in(const temp_folder& folder) {
  std::vector<picture_series> series;
  std::vector<std::string> lone;
  EXPECT_TRUE(find_series(series, lone, folder.path().string()));
  return series;
}

const std::vector<int> four = {1, 2, 3, 4};

TEST(PictureSeries, AreToldApartByAllButTheNumberThatCounts) {
  const temp_folder folder;
  touch(folder, "cam1_", four, ".png");
  touch(folder, "cam2_", {1, 2, 3}, ".png");
  touch(folder, "frame", four, "_left.jpg");
  touch(folder, "lone", {1}, ".jpg");
  write_file(folder.path() / "notes.txt", "");
  std::vector<picture_series> series;
  std::vector<std::string> lone;
  ASSERT_TRUE(find_series(series, lone, folder.path().string()));
  ASSERT_EQ(series.size(), 3u);
  EXPECT_EQ(series[0].before, "cam1_");
  EXPECT_EQ(series[0].numbers, (std::vector<long long>{1, 2, 3, 4}));
  EXPECT_EQ(series[1].before, "cam2_");
  EXPECT_EQ(series[1].names.size(), 3u);
  EXPECT_EQ(series[2].before, "frame");
  EXPECT_EQ(series[2].after, "_left.jpg");
  ASSERT_EQ(lone.size(), 1u);
  EXPECT_TRUE(lone[0].ends_with("lone01.jpg"));
}

TEST(PictureSeries, GivePatternsThatTheLibraryMatches) {
  for (const picture_series& series :
       {picture_series{"", "a+b(1)_", ".x.png", {"a+b(1)_07.x.png", "a+b(1)_11.x.png"}, {}},
        picture_series{"", "img", ".jpg", {"img9.jpg", "img10.jpg"}, {}}}) {
    for (const std::string& name : series.names) {
      bool matched = false;
      EXPECT_EQ(match_pattern(pattern_of(series), name, matched), 0);
      EXPECT_TRUE(matched) << pattern_of(series) << " " << name;
    }
  }
  EXPECT_EQ(pattern_of({"", "cam1_", ".png", {"cam1_07.png"}, {}}), "^cam1_\\d\\d\\.png$");
}

TEST(RigLayout, PairsLeftAndRight) {
  const temp_folder folder;
  touch(folder, "left", four, ".jpg");
  touch(folder, "right", four, ".jpg");
  touch(folder, "holiday", four, ".jpg");
  const rig_layout layout = lay_out(series_in(folder));
  EXPECT_EQ(layout.cameras, (std::vector<std::string>{"left", "right"}));
  ASSERT_EQ(layout.sets.size(), 3u);  // the pair, and each alone
  EXPECT_EQ(layout.sets[0].cameras, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(layout.left_out.size(), 1u);
  EXPECT_TRUE(layout.doubts.empty());
}

TEST(RigLayout, TakesFoldersForCamerasWhereTheNamesAreAlike) {
  const temp_folder folder;
  for (const char* camera : {"cam1", "cam2", "cam3"}) {
    touch(folder, std::string("indoors/") + camera + "/IMG_", four, ".JPG");
  }
  const rig_layout layout = lay_out(series_in(folder));
  EXPECT_EQ(layout.cameras, (std::vector<std::string>{"cam1", "cam2", "cam3"}));
  ASSERT_EQ(layout.sets.size(), 5u);  // all, each alone, and a pair to make five
  EXPECT_EQ(layout.sets[0].cameras.size(), 3u);
  EXPECT_EQ(layout.sets[4].cameras, (std::vector<std::size_t>{0, 1}));
}

TEST(RigLayout, KeepsSeriesOfDifferentFoldersApart) {
  const temp_folder folder;
  touch(folder, "one/cam1_", four, ".png");
  touch(folder, "two/cam2_", four, ".png");
  touch(folder, "both/cam1_", four, ".png");
  touch(folder, "both/cam2_", four, ".png");
  const rig_layout layout = lay_out(series_in(folder));
  ASSERT_EQ(layout.sets.size(), 3u);
  EXPECT_EQ(layout.sets[0].name, "both");
  EXPECT_EQ(layout.sets[0].cameras, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(layout.sets[1].cameras, (std::vector<std::size_t>{0}));
}

TEST(RigLayout, DoubtsPairsWithoutAPartner) {
  const temp_folder folder;
  touch(folder, "left", {1, 2, 3, 4, 5}, ".jpg");
  touch(folder, "right", {1, 2, 4, 5}, ".jpg");
  EXPECT_EQ(lay_out(series_in(folder)).doubts.size(), 1u);
}

TEST(RigLayout, DoesNotPairSeriesThatCountOtherwise) {
  const temp_folder folder;
  touch(folder, "left", four, ".jpg");
  touch(folder, "right", {21, 22, 23, 24}, ".jpg");
  const rig_layout layout = lay_out(series_in(folder));
  for (const layout_set& set : layout.sets) EXPECT_EQ(set.cameras.size(), 1u);
}

// A plan of two cameras side by side, not looked into.
init_plan plan_of(const temp_folder& folder) {
  init_plan plan;
  plan.series = series_in(folder);
  plan.layout = lay_out(plan.series);
  plan.lenses = {{{640, 480, 62, 0}, 5, false}, {{640, 480, 190, 1}, 0, false}};
  plan.output = folder.file("found.cal");
  return plan;
}

TEST(InitText, IsTakenByTheLibraryWithItsComments) {
  const temp_folder folder;
  touch(folder, "cam-1/", four, ".jpg");
  touch(folder, "cam-2/", four, ".jpg");
  init_plan plan = plan_of(folder);
  write_file(folder.path() / "rig.txt", init_text(plan));
  rig_pictures pictures;
  std::string said;
  ASSERT_EQ(read_rig_pictures(pictures, said, folder.file("rig.txt")), 0) << said;
  EXPECT_EQ(pictures.cameras.size(), 2u);
  EXPECT_EQ(pictures.cameras[1].lens, 1);
  ASSERT_EQ(pictures.sets.size(), 3u);
  EXPECT_EQ(frame_count(pictures.sets[0]), 4u);
  EXPECT_EQ(pictures.sets[0].set_cameras[1].files.size(), 4u);
  EXPECT_EQ(pictures.sets[0].board_width, 9);
  EXPECT_NE(init_text(plan).find("are placeholders, fill them in"), std::string::npos);
  EXPECT_NE(init_text(plan).find("couldn't be told"), std::string::npos);
}

TEST(InitCommand, LeavesAnOlderConfigurationAlone) {
  const temp_folder folder;
  write_file(folder.path() / "rig.txt", "mine");
  const tool_run run =
      run_here("init " + folder.path().string() + " --out " + folder.file("rig.txt"));
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(read_file(folder.file("rig.txt")), "mine");
}

TEST(InitCommand, TellsWhereThereIsNoRig) {
  const temp_folder folder;
  touch(folder, "left", four, ".jpg");
  const tool_run run =
      run_here("init " + folder.path().string() + " --out " + folder.file("rig.txt"));
  EXPECT_EQ(run.code, 11);
  EXPECT_NE(run.err.find("1 camera,"), std::string::npos) << run.err;
  EXPECT_FALSE(std::filesystem::exists(folder.file("rig.txt")));
  EXPECT_EQ(run_here("init " + folder.file("nowhere") + " --out " + folder.file("r")).code, 2);
}

}  // namespace
}  // namespace ocpan

#include <filesystem>

#include <gtest/gtest.h>

#include "simulator/presets.h"
#include "simulator/rig_json.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;

TEST(SimulatePreset, PrintsTheDescription) {
  rig_description rig;
  ASSERT_FALSE(preset_names().empty());
  const std::string name = preset_names().front();
  ASSERT_EQ(make_preset(rig, name), "");
  const tool_run run = run_here("simulate preset " + name);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, rig_to_json(rig));
}

TEST(SimulatePreset, WritesTheDescriptionToAFile) {
  const temp_folder folder;
  const std::string name = preset_names().back();
  const tool_run run = run_here("simulate preset " + name + " --out " + folder.file("rig.json"));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(read_file(folder.file("rig.json")), run_here("simulate preset " + name).out);
}

TEST(SimulatePreset, RefusesAnUnknownNameAndListsTheNames) {
  const tool_run run = run_here("simulate preset 5-lens9");
  EXPECT_EQ(run.code, 64);
  EXPECT_EQ(run.out, "");
  for (const std::string& name : preset_names()) {
    EXPECT_NE(run.err.find(name), std::string::npos) << name;
  }
}

TEST(SimulatePreset, TellsOfAFileThatCantBeWritten) {
  const temp_folder folder;
  const tool_run run = run_here("simulate preset 3-lens0 --out " + folder.file("missing/rig.json"));
  EXPECT_EQ(run.code, 3);
  EXPECT_NE(run.err.find("name a file in a folder that is there"), std::string::npos) << run.err;
}

TEST(SimulatePreset, NamesThePresetsInItsHelp) {
  const tool_run run = run_here("simulate preset --help");
  EXPECT_EQ(run.code, 0);
  for (const std::string& name : preset_names()) {
    EXPECT_NE(run.out.find("\n  " + name + "\n"), std::string::npos) << name;
  }
}

// A rig of two small cameras with one frame a set.
std::string small_rig() {
  rig_description rig;
  EXPECT_EQ(make_preset(rig, "2-lens0"), "");
  for (series_description& series : rig.sets) series.frames = 1;
  return rig_to_json(rig);
}

TEST(SimulateBoards, WritesPicturesConfigurationAndTruth) {
  const temp_folder folder;
  write_file(folder.file("rig.json"), small_rig());
  const tool_run run =
      run_here("simulate boards " + folder.file("rig.json") + " " + folder.file("made"));
  EXPECT_EQ(run.code, 0) << run.err;
  for (const char* name :
       {"made/pictures", "made/calibration.txt", "made/truth.cal", "made/rig.json"}) {
    EXPECT_TRUE(std::filesystem::exists(folder.file(name))) << name;
    EXPECT_NE(run.out.find(folder.file(name) + "\n"), std::string::npos) << name;
  }
}

TEST(SimulateBoards, TellsOfADescriptionThatIsNotThere) {
  const temp_folder folder;
  const tool_run run =
      run_here("simulate boards " + folder.file("rig.json") + " " + folder.file("made"));
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.err.find("Couldn't open: "), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("write a new one with oc_pan simulate preset"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(folder.file("made")));
}

TEST(SimulateBoards, TellsOfAMalformedDescription) {
  const temp_folder folder;
  write_file(folder.file("rig.json"), "{}");
  const tool_run run =
      run_here("simulate boards " + folder.file("rig.json") + " " + folder.file("made"));
  EXPECT_EQ(run.code, 4);
  EXPECT_NE(run.err.find("; correct " + folder.file("rig.json")), std::string::npos) << run.err;
}

TEST(SimulateBoards, TellsOfAFileInPlaceOfTheFolder) {
  const temp_folder folder;
  write_file(folder.file("rig.json"), small_rig());
  const tool_run run =
      run_here("simulate boards " + folder.file("rig.json") + " " + folder.file("rig.json"));
  EXPECT_EQ(run.code, 3);
  EXPECT_NE(run.err.find("may be written to, or name another one"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace ocpan

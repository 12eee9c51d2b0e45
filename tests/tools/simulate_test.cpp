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

}  // namespace
}  // namespace ocpan

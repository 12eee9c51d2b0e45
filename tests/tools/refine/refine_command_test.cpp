#include <gtest/gtest.h>

#include "tests/tools/pair_configuration.h"
#include "tests/tools/tool_process.h"
#include "tools/refine/refine_run.h"

namespace ocpan {
namespace {

using testing::run_here;
using testing::tool_run;
using testing::working_folder;
using testing::write_file;

TEST(RefinedName, StandsBesideTheCalibration) {
  EXPECT_EQ(refined_name("out/rig.cal"), "out/rig_refined.cal");
  EXPECT_EQ(refined_name("out.d\\rig"), "out.d\\rig_refined");
  EXPECT_EQ(refined_name(".rig"), ".rig_refined");
}

TEST(RefineCommand, WantsAnOutput) {
  const tool_run run = run_here("refine a.cal a.txt");
  EXPECT_EQ(run.code, 64);
  EXPECT_NE(run.err.find("--out"), std::string::npos) << run.err;
}

TEST(RefineCommand, RefusesATieThatIsNotPositive) {
  EXPECT_EQ(run_here("refine a.cal a.txt --out b.cal --tie 0").code, 64);
}

TEST(RefineCommand, RefusesToOverwriteItsInput) {
  const working_folder folder;
  write_file("rig.cal", "kept");
  const tool_run run = run_here("refine rig.cal rig.txt --out rig.cal");
  EXPECT_EQ(run.code, 3);
  EXPECT_NE(run.err.find("is an input"), std::string::npos) << run.err;
  EXPECT_EQ(testing::read_file("rig.cal"), "kept");
}

TEST(RefineCommand, RefusesToOverwriteAPicture) {
  const working_folder folder;
  for (const char* picture : {"a1.png", "b1.png"}) write_file(picture, "kept");
  write_file("rig.txt", testing::pair_configuration(".", "found.cal"));
  const tool_run out = run_here("refine rig.cal rig.txt --out b1.png");
  EXPECT_EQ(out.code, 3);
  EXPECT_NE(out.err.find("--out: b1.png is an input"), std::string::npos) << out.err;
  const tool_run json = run_here("refine rig.cal rig.txt --out out.cal --json a1.png");
  EXPECT_EQ(json.code, 3);
  EXPECT_NE(json.err.find("--json: a1.png is an input"), std::string::npos) << json.err;
}

TEST(RefineCommand, TellsOfACalibrationThatIsNotThere) {
  const working_folder folder;
  const tool_run run = run_here("refine rig.cal rig.txt --out out.cal");
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.err.find("rig.cal"), std::string::npos) << run.err;
  EXPECT_FALSE(std::filesystem::exists("out.cal"));
}

}  // namespace
}  // namespace ocpan

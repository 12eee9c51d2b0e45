#include <gtest/gtest.h>

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

TEST(RefineCommand, TellsOfACalibrationThatIsNotThere) {
  const working_folder folder;
  const tool_run run = run_here("refine rig.cal rig.txt --out out.cal");
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.err.find("rig.cal"), std::string::npos) << run.err;
  EXPECT_FALSE(std::filesystem::exists("out.cal"));
}

}  // namespace
}  // namespace ocpan

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "calfiles/selen360_cal_file.h"
#include "simulator/board_series.h"
#include "simulator/compare_rigs.h"
#include "simulator/presets.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::run_tool;
using testing::tool_run;

rig models_in(const std::string& path) {
  selen360_cal_file file(1);
  EXPECT_EQ(file.load(path.c_str()), 0);
  return file.models();
}

// From rendered pictures to tables of the refined calibration.
TEST(Refine, MakesACalibrationOfPicturesBetterAndTheTablesTakeIt) {
  const testing::working_folder folder;
  rig_description description;
  ASSERT_EQ(make_preset(description, "2-lens1-unlike"), "");
  ASSERT_EQ(write_board_series(description, "series", {}), "");

  const tool_run run = run_tool("cal series/calibration.txt --quiet --refine");
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_NE(run.out.find("found_refined.cal"), std::string::npos) << run.out;
  const std::vector<camera_details> details = details_of(description);
  const rig truth = models_of(description);
  const auto before = compare_rigs(models_in("series/found.cal"), truth, details);
  const auto after = compare_rigs(models_in("series/found_refined.cal"), truth, details);
  EXPECT_LT(after[1].rotation_degrees, before[1].rotation_degrees);
  EXPECT_LT(after[1].rotation_degrees, 0.05);
  EXPECT_LT(after[0].mapping_pixels, 0.25);
  EXPECT_LT(after[1].mapping_pixels, 0.25);

  const tool_run again =
      run_tool("refine series/found.cal series/calibration.txt --out again.cal --json again.json");
  ASSERT_EQ(again.code, 0) << again.err;
  EXPECT_EQ(testing::read_file("again.cal"), testing::read_file("series/found_refined.cal"));
  const auto json = nlohmann::json::parse(testing::read_file("again.json"));
  EXPECT_LT(json["residuals"]["after"]["mean"], json["residuals"]["before"]["mean"]);

  EXPECT_EQ(run_tool("simulate masks again.cal masks --overlap 5").code, 0);
  const tool_run tables = run_tool("lut again.cal masks/mask table");
  EXPECT_EQ(tables.code, 0) << tables.err;
}

}  // namespace
}  // namespace ocpan

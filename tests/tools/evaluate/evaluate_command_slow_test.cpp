#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "simulator/board_series.h"
#include "simulator/presets.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_here;
using testing::tool_run;
using testing::working_folder;

TEST(EvaluateCommand, TruthIsGoodOnRenderedPicturesAndAForeignFrameIsNamed) {
  const working_folder folder;
  rig_description description;
  ASSERT_EQ(make_preset(description, "2-lens1"), "");
  for (series_description& set : description.sets) set.frames = 5;
  ASSERT_EQ(write_board_series(description, folder.path().string(), {}), "");
  tool_run run = run_here("evaluate truth.cal calibration.txt --hold-out 2 --json numbers.json");
  EXPECT_EQ(run.code, 0) << run.out << run.err;
  EXPECT_NE(run.out.find("Verdict: good"), std::string::npos);
  const auto json = nlohmann::json::parse(read_file(folder.path() / "numbers.json"));
  EXPECT_EQ(json["verdict"], "good");
  EXPECT_EQ(json["exit_code"], 0);
  EXPECT_EQ(json["boards"].size(), 15u);
  EXPECT_EQ(json["residuals"]["pixels"]["count"], 20 * 54);
  EXPECT_LT(json["residuals"]["pixels"]["rms"], 0.15);
  EXPECT_EQ(json["hold_out"]["parts"], 2);
  EXPECT_EQ(json["uncertainty"]["cameras"].size(), 2u);
  EXPECT_LT(json["uncertainty"]["pairs"].at(0)["seam_degrees"], 0.1);

  // One picture of the pair takes another's place; its time tells that it is new.
  const std::filesystem::path pair = folder.path() / "pictures" / "pair12";
  std::filesystem::copy_file(pair / "cam2_03.png", pair / "cam2_01.png",
                             std::filesystem::copy_options::overwrite_existing);
  run = run_here("evaluate truth.cal calibration.txt");
  EXPECT_EQ(run.code, 10) << run.out << run.err;
  EXPECT_NE(run.out.find("set pair12, cam1_01.png, cam2_01.png: its pictures don't belong"),
            std::string::npos)
      << run.out;
  run = run_here("evaluate truth.cal calibration.txt -q");
  EXPECT_EQ(run.out.rfind("doubtful: 1 board is left out because cameras contradict", 0), 0u)
      << run.out;
  EXPECT_NE(run.out.find("\nVerdict: doubtful\n"), std::string::npos) << run.out;
}

}  // namespace
}  // namespace ocpan

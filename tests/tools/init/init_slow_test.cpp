#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

#include "simulator/board_series.h"
#include "simulator/presets.h"
#include "tests/support/temp_folder.h"
#include "tests/tools/tool_process.h"
#include "tools/boards/rig_pictures.h"

namespace ocpan {
namespace {

using testing::run_here;
using testing::temp_folder;
using testing::tool_run;

// Renders a preset's boards, lets init find out all about them, and has check judge it.
void expect_round_trip(const std::string& preset) {
  const temp_folder folder;
  rig_description rig;
  ASSERT_EQ(make_preset(rig, preset), "");
  ASSERT_EQ(write_board_series(rig, folder.path().string(), {}), "");
  const std::string config = folder.file("guessed.txt");
  const tool_run made = run_here("init " + folder.file("pictures") + " --out " + config);
  ASSERT_EQ(made.code, 0) << made.out << made.err;
  rig_pictures pictures;
  std::string said;
  ASSERT_EQ(read_rig_pictures(pictures, said, config), 0) << said;
  ASSERT_EQ(pictures.cameras.size(), rig.cameras.size());
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    EXPECT_EQ(pictures.cameras[k].width, rig.cameras[k].details.width);
    EXPECT_EQ(pictures.cameras[k].lens, rig.cameras[k].details.lens);
    EXPECT_NEAR(pictures.cameras[k].hfov, rig.cameras[k].details.hfov,
                0.1 * static_cast<double>(rig.cameras[k].details.hfov));
  }
  EXPECT_EQ(pictures.sets.size(), rig.sets.size());
  EXPECT_EQ(pictures.sets.at(0).board_width, 9);
  EXPECT_EQ(pictures.sets.at(0).board_height, 6);
  const tool_run checked = run_here("check " + config);
  EXPECT_EQ(checked.code, 0) << checked.out;
}

TEST(InitRoundTrip, GivesAConfigurationThatCheckFindsGood) {
  expect_round_trip("2-lens0");
  expect_round_trip("2-lens1");
  expect_round_trip("2-lens2");
}

}  // namespace
}  // namespace ocpan

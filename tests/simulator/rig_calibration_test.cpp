#include "simulator/rig_calibration.h"

#include <gtest/gtest.h>

#include "simulator/presets.h"
#include "simulator/rig_json.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::write_file;

const std::string details_line = "Width:40 Height:30 Lens:0 Hfov:90\n";
const std::string model_line =
    "C_0:0 C_1:7.5 C_2:0 A_th:3.14159265 A_ph:0 H_0:20 H_1:0 H_2:-20 V_0:0 V_1:-20 V_2:-15 "
    "O_th:3.14159265 O_ph:0 rho_0:0 rho_1:0 rho_2:0 L:1\n";

TEST(ReadRigOrCalibration, TakesTheCamerasOfACalibration) {
  const testing::temp_folder folder;
  write_file(folder.file("rig.cal"), details_line + details_line + model_line + model_line);
  rig_description rig;
  ASSERT_EQ(read_rig_or_calibration(rig, folder.file("rig.cal")), "");
  ASSERT_EQ(rig.cameras.size(), 2u);
  EXPECT_EQ(rig.cameras[1].details.width, 40);
  EXPECT_EQ(rig.cameras[1].details.hfov, 90);
  EXPECT_EQ(value_of(rig.cameras[1].model, C_1), 7.5);
  EXPECT_TRUE(rig.sets.empty());
}

TEST(ReadRigOrCalibration, TakesADescription) {
  const testing::temp_folder folder;
  rig_description written, read;
  ASSERT_EQ(make_preset(written, "3-lens0"), "");
  write_file(folder.file("rig"), "\n " + rig_to_json(written));
  ASSERT_EQ(read_rig_or_calibration(read, folder.file("rig")), "");
  EXPECT_EQ(rig_to_json(read), rig_to_json(written));
}

TEST(ReadRigOrCalibration, TellsWhatIsWrongWithACalibration) {
  const testing::temp_folder folder;
  const std::string path = folder.file("rig.cal");
  rig_description rig;
  const auto problem_of = [&](const std::string& text) {
    write_file(path, text);
    return read_rig_or_calibration(rig, path);
  };
  EXPECT_EQ(problem_of(""), path + ": cameras: expected 1 to 8 of them");
  EXPECT_EQ(problem_of(details_line),
            path + " tells the pictures of 1 cameras and the models of 0");
  EXPECT_EQ(problem_of(details_line + "C_0:0\n"), path + ": cameras[0].model.C_1: is missing");
  EXPECT_EQ(problem_of("Width:4 Height:30 Lens:0 Hfov:90\n" + model_line),
            path + ": cameras[0].width: expected 16 to 16384 pixels");
  std::string problem;
  EXPECT_EQ(testing::printed_by([&] { problem = problem_of("What:1\n"); }),
            "parameter not recognised: What\n");
  EXPECT_EQ(problem, path + " is no calibration");
}

TEST(ReadRigOrCalibration, TellsOfAFileThatCantBeOpened) {
  const testing::temp_folder folder;
  rig_description rig;
  const std::string missing = folder.file("missing");
  EXPECT_EQ(read_rig_or_calibration(rig, missing), "Couldn't open: " + missing);
}

}  // namespace
}  // namespace ocpan

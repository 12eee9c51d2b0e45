#include <filesystem>
#include <iostream>
#include <string>
#include <utility>

#include "calfiles/selen360_cal_file.h"
#include "tests/exports/cal_fixture.h"

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::write_file;

using Cal = testing::Cal;

// A configuration of cameras (their lines) and of sets without any matching picture.
std::string config_of(const std::string& cameras, const std::string& sets) {
  return "base_directory: ''\noutput_filename: 'out.cal'\ncamera_info:\n" + cameras +
         "calibration_sets:\n" + sets;
}

const std::string two_cameras =
    "  - width: 480, height: 360, hfov: 70, lens: 0\n"
    "  - width: 480, height: 360, hfov: 70, lens: 0\n";

std::string empty_set(const std::string& cameras = "[1]", const std::string& patterns = "'^q$'") {
  return "  - set_name: 's', board_scale: 25\n    cameras: " + cameras +
         "\n    filename_patterns: [" + patterns + "]\n    board_shape: [5, 4]\n";
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

TEST_F(Cal, RefusesANullConfiguration) {
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = ocPAN_Cal(nullptr, &summary); }), "");
  EXPECT_EQ(result, OCPAN_INVALID);
  EXPECT_EQ(summary.average_reprojection_error, -7);
}

TEST_F(Cal, CountsAMissingFileAsNoCameras) {
  EXPECT_EQ(run("nowhere.txt"), OCPAN_INVALID);
  EXPECT_EQ(printed, "Couldn't open: nowhere.txt\n");
}

TEST_F(Cal, RefusesAFolderAsConfiguration) {
  EXPECT_EQ(run("."), OCPAN_INVALID);
  EXPECT_EQ(printed, "Couldn't open: .\n");
}

TEST_F(Cal, RefusesOneCameraAfterTheSummary) {
  EXPECT_EQ(run_text(config_of("  - width: 480, height: 360, hfov: 70, lens: 0\n", empty_set())),
            OCPAN_INVALID);
  EXPECT_TRUE(has_line(" Camera parameters (1):"));
  EXPECT_EQ(printed.find("OpenCV version"), std::string::npos);
  EXPECT_EQ(summary.average_reprojection_error, -7);
}

TEST_F(Cal, RefusesNineCamerasWhateverTheReaderSays) {
  std::string nine;
  for (int i = 0; i < 9; ++i) nine += "  - width: 480, height: 360, hfov: 70, lens: 0\n";
  EXPECT_EQ(run_text(config_of(nine, "  - odd: 1\n")), OCPAN_INVALID);
}

TEST_F(Cal, GivesTheReadersCodeOnceTwoCamerasAreRead) {
  EXPECT_EQ(run_text(config_of(two_cameras, "  - odd: 1\n")), OCPAN_MALFORMED);
  EXPECT_EQ(printed, "Unrecognised calibration_sets:   - odd\n");
}

TEST_F(Cal, MapsAnUnknownCameraKeyToFailure) {
  EXPECT_EQ(run_text(config_of(two_cameras + "  - weight: 3\n", "")), OCPAN_FAILURE);
  EXPECT_TRUE(has_line("Unrecognised camera_info:   - weight"));
}

TEST_F(Cal, GivesOneForACameraWithoutItsWidth) {
  EXPECT_EQ(run_text(config_of(two_cameras + "  - height: 360, hfov: 70, lens: 0\n", "")),
            OCPAN_RESERVED);
  EXPECT_EQ(printed,
            "Camera Details incomplete\n"
            "Details present were: Width 1, Height 1, Hfov 0, Lens 1\n");
}

TEST_F(Cal, RunsOnAfterACameraWithoutItsHeight) {
  EXPECT_EQ(run_text(config_of(two_cameras + "  - width: 480, hfov: 70, lens: 0\n", "")),
            OCPAN_SUCCESS);
  EXPECT_TRUE(has_line("Details present were: Width 0, Height 0, Hfov 0, Lens 1"));
  EXPECT_TRUE(has_line("OpenCV version : 3.4.0"));
  EXPECT_TRUE(has_line("total group : 0"));
  EXPECT_TRUE(has_line("-----------Model calibration finished!-----------"));
  EXPECT_TRUE(std::filesystem::exists("out.cal"));
  EXPECT_EQ(summary.matched_point_count, 0);
  EXPECT_EQ(summary.minimum_dist_ratio, 0);
}

TEST_F(Cal, RefusesACameraWhoseLensNobodyNamed) {
  EXPECT_EQ(run_text(config_of(two_cameras + "  - width: 480, height: 360, hfov: 70\n", "")),
            OCPAN_INVALID);
  EXPECT_TRUE(has_line("Lens expects 0, 1 or 2, got: '-1"));
  EXPECT_FALSE(std::filesystem::exists("out.cal"));
  // The run was begun, so its empty measures are copied.
  EXPECT_EQ(summary.average_reprojection_error, 0);
}

TEST_F(Cal, DropsASetWhoseFirstCameraHasNoFilesWithoutAWord) {
  // Ahead of the check of its camera ids, too.
  const std::string sets = empty_set("[9]") + empty_set() + empty_set("[1, 2]", "'^q$', '^r$'");
  EXPECT_EQ(run_text(config_of(two_cameras, sets)), OCPAN_SUCCESS);
  EXPECT_EQ(printed.find("This cal_frame_set_number"), std::string::npos);
  EXPECT_EQ(printed.find("out of range"), std::string::npos);
}

TEST_F(Cal, RefusesACameraIdOutOfRange) {
  for (const auto& [id, shown] : {std::pair{"[3]", "3"}, std::pair{"[0]", "0"}}) {
    write_file("q", "no picture");
    const std::string sets = empty_set() + empty_set(id) + empty_set();
    EXPECT_EQ(run_text(config_of(two_cameras, sets)), OCPAN_MALFORMED);
    EXPECT_TRUE(has_line(std::string("Camera id out of range 1..2: ") + shown));
    EXPECT_EQ(printed.find("OpenCV version"), std::string::npos);
    EXPECT_EQ(summary.average_reprojection_error, -7);
  }
}

TEST_F(Cal, GoesOnWhenNoPictureCanBeRead) {
  write_file("q", "no picture");
  const std::string sets = empty_set() + empty_set("[2]") + empty_set();
  EXPECT_EQ(run_text(config_of(two_cameras, sets)), OCPAN_SUCCESS);
  EXPECT_TRUE(has_line("Error opening image file q"));
  EXPECT_TRUE(has_line("total group : 0"));
  // The start models come out, with their LAMBDA.
  selen360_cal_file file(1);
  ASSERT_EQ(file.load("out.cal"), 0);
  EXPECT_EQ(file.models()[1].at(LAMBDA), 1);
  EXPECT_EQ(file.models()[1].at(H_2), -240);
  const std::string measures = read_file("out.cal_QA_Measures.txt");
  EXPECT_NE(measures.find("    Matched Point Count        : -1\n"), std::string::npos);
  EXPECT_NE(read_file("out.cal_distance.csv").find("0,false,-1.000000,,"), std::string::npos);
}

TEST_F(Cal, FailsWhenTheCalibrationFileCantBeOpened) {
  write_file("q", "no picture");
  const std::string sets = empty_set() + empty_set("[2]") + empty_set();
  std::string text = config_of(two_cameras, sets);
  EXPECT_EQ(run_text(replaced(text, "out.cal", "nowhere/out.cal")), OCPAN_OUTPUT);
  EXPECT_TRUE(has_line("Couldn't open: nowhere\\out.cal"));
  EXPECT_EQ(summary.matched_point_count, 0);  // copied all the same
}

TEST_F(Cal, LeavesTheReportsOfAnEarlierRunWhenItFails) {
  std::filesystem::create_directory("out.cal");
  write_file("out.cal_distance.csv", "earlier");
  write_file("out.cal_QA_Measures.txt", "earlier");
  EXPECT_EQ(run_text(config_of(two_cameras, empty_set() + empty_set() + empty_set())),
            OCPAN_OUTPUT);
  EXPECT_EQ(read_file("out.cal_distance.csv"), "earlier");
  EXPECT_EQ(read_file("out.cal_QA_Measures.txt"), "earlier");
}

TEST_F(Cal, ReportsOnTheSetsThatAreLeftInTheirOrder) {
  write_file("q", "no picture");
  const std::string sets = empty_set("[2]") + empty_set("[1]", "'^r$'") + empty_set("[1]");
  EXPECT_EQ(run_text(config_of(two_cameras, sets)), OCPAN_SUCCESS);
  EXPECT_EQ(read_file("out.cal_distance.csv").rfind("----Cam 1----,,,,----Cam 0----,,,,\n", 0), 0u);
  const std::string head = "Camera Number : 2\nCalibration Sets Number : 2\n";
  EXPECT_EQ(read_file("out.cal_QA_Measures.txt").rfind(head, 0), 0u);
}

TEST_F(Cal, TakesTheScaleOfTheHistogramsFromTheLastCamera) {
  const std::string sets = empty_set() + empty_set() + empty_set();
  const std::string rectilinear = "  - width: 480, height: 360, hfov: 70, lens: 0\n";
  const std::string fisheye = "  - width: 480, height: 360, hfov: 200, lens: 2\n";
  ASSERT_EQ(run_text(config_of(rectilinear + fisheye, sets)), OCPAN_SUCCESS);
  EXPECT_EQ(read_file("out.cal_distance.csv").find("[3000 - "), std::string::npos);
  ASSERT_EQ(run_text(config_of(fisheye + rectilinear, sets)), OCPAN_SUCCESS);
  EXPECT_NE(read_file("out.cal_distance.csv").find("[9800 - 10000)"), std::string::npos);
}

TEST_F(Cal, GivesEachCameraALensAndPictureOfItsOwn) {
  const std::string cameras =
      "  - width: 480, height: 360, hfov: 70, lens: 0\n"
      "  - width: 640, height: 500, hfov: 180, lens: 1\n"
      "  - width: 800, height: 700, hfov: 200, lens: 2\n";
  std::string sets;
  for (int i = 0; i < 5; ++i) sets += empty_set("[3]");
  ASSERT_EQ(run_text(config_of(cameras, sets)), OCPAN_SUCCESS);
  const camera_details expected[] = {{480, 360, 70, 0}, {640, 500, 180, 1}, {800, 700, 200, 2}};
  selen360_cal_file file(1.0f);
  ASSERT_EQ(file.load("out.cal"), OCPAN_SUCCESS);
  ASSERT_EQ(file.models().size(), 3u);
  for (std::size_t c = 0; c < 3; ++c) {
    const camera_details& found = file.details()[c];
    EXPECT_EQ(found.width, expected[c].width) << c;
    EXPECT_EQ(found.height, expected[c].height) << c;
    EXPECT_EQ(found.hfov, expected[c].hfov) << c;
    EXPECT_EQ(found.lens, expected[c].lens) << c;
    const model_map start = initial_model(expected[c]);
    for (const parameter_name name : {H_0, H_2, V_1, V_2, L}) {  // no board has moved them
      EXPECT_NEAR(value_of(file.models()[c], name), value_of(start, name), 1e-3)
          << c << " " << name;
    }
  }
}

TEST_F(Cal, FailsOnAFullDisk) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
  write_file("q", "no picture");
  const std::string sets = empty_set() + empty_set("[2]") + empty_set();
  std::string text = config_of(two_cameras, sets);
  EXPECT_EQ(run_text(replaced(text, "out.cal", "/dev/full")), OCPAN_OUTPUT);
  EXPECT_TRUE(has_line("Error writing output file: \\dev\\full"));
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST_F(Cal, MayBeCalledWithoutASummary) {
  write_file("q", "no picture");
  const std::string sets = empty_set() + empty_set("[2]") + empty_set();
  write_file("rig.txt", config_of(two_cameras, sets));
  int result = 99;
  printed_by([&] { result = ocPAN_Cal("rig.txt", nullptr); });
  EXPECT_EQ(result, OCPAN_SUCCESS);
}

TEST_F(Cal, PrintsInTheClassicFormatWhateverTheHostSet) {
  write_file("q", "no picture");
  const std::string sets = empty_set() + empty_set("[2]") + empty_set();
  const std::string text = replaced(config_of(two_cameras, sets), "hfov: 70", "hfov: 70.25");
  ASSERT_EQ(run_text(text), OCPAN_SUCCESS);
  const std::string before = printed;
  const auto flags = std::cout.flags();
  std::cout << std::hex << std::showpos << std::fixed;
  std::cout.precision(1);
  ASSERT_EQ(run_text(text), OCPAN_SUCCESS);
  std::cout.flags(flags);
  std::cout.precision(6);
  EXPECT_EQ(printed, before);
  EXPECT_NE(before.find("hfov: 70.25,"), std::string::npos);
}

}  // namespace
}  // namespace ocpan

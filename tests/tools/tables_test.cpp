#include <filesystem>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "simulator/rig_json.h"
#include "tests/tools/camera_text.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::camera_text;
using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;
namespace fs = std::filesystem;

// A folder with a calibration of two cameras and their masks.
class tables : public ::testing::Test {
 protected:
  tables() {
    write_file(file("rig.cal"), camera_text + camera_text);
    for (const char* name : {"mask_0.png", "mask_1.png"}) {
      cv::imwrite(file(name), cv::Mat(30, 40, CV_8UC1, cv::Scalar(255)));
    }
  }
  std::string file(const std::string& name) const { return folder_.file(name); }
  tool_run run(const std::string& command, const std::string& more = "") const {
    return run_here(command + " " + file("rig.cal") + " " + file("mask") + " " + file("out") + " " +
                    more);
  }

 private:
  temp_folder folder_;
};

TEST_F(tables, LutTellsOfEachCamera) {
  const tool_run got = run("lut");
  EXPECT_EQ(got.code, 0) << got.err;
  EXPECT_EQ(got.out, "camera 0: lookup table " + file("out_0.bin") + "\ncamera 1: lookup table " +
                         file("out_1.bin") + "\n");
  EXPECT_EQ(got.err, "");
  EXPECT_EQ(read_file(file("out_1.bin")).size(), 4194304u);
}

TEST_F(tables, PolyTellsOfEachCamera) {
  const tool_run got = run("poly", "--radius 2");
  EXPECT_EQ(got.code, 0) << got.err;
  EXPECT_EQ(got.out, "camera 0: polygon " + file("out_0.bin") + "\ncamera 1: polygon " +
                         file("out_1.bin") + "\n");
  EXPECT_EQ(read_file(file("out_1.bin")).size(), 1536u);
}

TEST_F(tables, FaceSizeGoesToTheLibrary) {
  EXPECT_EQ(run("lut", "--face 129").code, 0);
  const std::string small = read_file(file("out_0.bin"));
  EXPECT_EQ(run("lut", "--face 253").code, 0);
  EXPECT_NE(read_file(file("out_0.bin")), small);
  EXPECT_EQ(run("lut", "--face 200").code, 64);
}

TEST_F(tables, ProjectFileGoesToTheLibrary) {
  write_file(file("rig.cal"), "i w40 h30 f0 v90\n");
  EXPECT_EQ(run("lut", "--project-file").code, 0);
  const tool_run wrong = run("lut");
  EXPECT_EQ(wrong.code, 4);
  EXPECT_NE(wrong.err.find("needs --project-file"), std::string::npos) << wrong.err;
}

TEST_F(tables, RefusesACalibrationWithANumberThatIsNone) {
  std::string text = camera_text;
  text.replace(text.find("rho_1:0"), 7, "rho_1:inf");
  write_file(file("rig.cal"), text);
  for (const char* command : {"lut", "poly"}) {
    const tool_run got = run(command);
    EXPECT_EQ(got.code, 4);
    EXPECT_EQ(got.err, "oc_pan: " + file("rig.cal") +
                           " holds rho_1:inf in line 2, which the library would read as 0; "
                           "correct it or calibrate again\n");
    EXPECT_FALSE(fs::exists(file("out_0.bin")));
  }
}

TEST_F(tables, TellsWhatTheLibraryMisses) {
  fs::remove(file("mask_1.png"));
  const tool_run got = run("lut");
  EXPECT_EQ(got.code, 4);
  EXPECT_NE(got.out.find("camera 0: lookup table"), std::string::npos);
  EXPECT_NE(got.out.find("Error opening image file " + file("mask_1.png")), std::string::npos);
  EXPECT_NE(got.err.find("the run ended with 4"), std::string::npos);
}

TEST_F(tables, RefusesASmallRadiusAndAMissingFolder) {
  EXPECT_EQ(run("lut", "--radius 0.4").code, 64);
  const tool_run got =
      run_here("lut " + file("rig.cal") + " " + file("mask") + " " + file("missing/out"));
  EXPECT_EQ(got.code, 3);
  EXPECT_NE(got.err.find("isn't there"), std::string::npos) << got.err;
}

TEST_F(tables, PreviewStitchesWhatTheTablesSay) {
  ASSERT_EQ(run("lut").code, 0);
  ASSERT_EQ(run_here("poly " + file("rig.cal") + " " + file("mask") + " " + file("poly")).code, 0);
  cv::imwrite(file("a.png"), cv::Mat(30, 40, CV_8UC3, cv::Scalar(10, 20, 30)));
  const std::string pictures = file("a.png") + " " + file("a.png");
  const tool_run got = run_here("preview " + file("out") + " " + pictures + " --out " +
                                file("pano.png") + " --width 64");
  EXPECT_EQ(got.code, 0) << got.err;
  EXPECT_EQ(got.out.find("panorama " + file("pano.png") + ", 64 x 32, "), 0u) << got.out;
  const cv::Mat panorama = cv::imread(file("pano.png"));
  ASSERT_EQ(panorama.size(), cv::Size(64, 32));
  EXPECT_EQ(panorama.at<cv::Vec3b>(16, 32), cv::Vec3b(10, 20, 30));
  EXPECT_EQ(panorama.at<cv::Vec3b>(16, 0), cv::Vec3b(0, 0, 0));
  EXPECT_EQ(run_here("preview " + file("out") + " " + pictures + " --out " + file("outlined.png") +
                     " --width 64 --polygons " + file("poly"))
                .code,
            0);
  EXPECT_GT(cv::norm(cv::imread(file("outlined.png")), panorama), 0);
}

TEST_F(tables, PreviewTellsWhatItCanNotRead) {
  ASSERT_EQ(run("lut").code, 0);
  const std::string out = " --out " + file("pano.png");
  const tool_run table = run_here("preview " + file("none") + " " + file("mask_0.png") + out);
  EXPECT_EQ(table.code, 2);
  EXPECT_NE(table.err.find(file("none_0.bin") + " can't be opened"), std::string::npos);
  const tool_run picture = run_here("preview " + file("out") + " " + file("rig.cal") + out);
  EXPECT_EQ(picture.code, 2);
  EXPECT_NE(picture.err.find(file("rig.cal") + " can't be read"), std::string::npos);
  const tool_run name =
      run_here("preview " + file("out") + " " + file("mask_0.png") + " --out " + file("pano.what"));
  EXPECT_EQ(name.code, 3);
  EXPECT_NE(name.err.find("let it end in .jpg or .png"), std::string::npos);
}

TEST_F(tables, SimulateMakesMasksAndAWorld) {
  rig_description rig;
  for (int i = 0; i < 2; ++i) {
    const camera_details details{32, 24, 90, 0};
    rig.cameras.push_back({details, initial_model(details)});
  }
  rig.cameras[1].model[A_th] = 2;
  ASSERT_EQ(write_rig_file(rig, file("rig.json")), "");
  const tool_run masks = run_here("simulate masks " + file("rig.json") + " " + file("new/masks"));
  EXPECT_EQ(masks.code, 0) << masks.err;
  EXPECT_EQ(masks.out, "mask_0.png and so on in " + file("new/masks") + "\n");
  EXPECT_TRUE(fs::exists(file("new/masks/mask_1.png")));
  const tool_run world =
      run_here("simulate world " + file("rig.json") + " " + file("world") + " --width 40");
  EXPECT_EQ(world.code, 0) << world.err;
  EXPECT_EQ(cv::imread(file("world/panorama.png")).size(), cv::Size(40, 20));
  EXPECT_EQ(cv::imread(file("world/world_1.png")).size(), cv::Size(32, 24));
}

TEST_F(tables, SimulateMakesTheMasksOfACalibration) {
  const tool_run masks = run_here("simulate masks " + file("rig.cal") + " " + file("masks"));
  EXPECT_EQ(masks.code, 0) << masks.err;
  EXPECT_EQ(cv::imread(file("masks/mask_1.png")).size(), cv::Size(40, 30));
}

TEST_F(tables, SimulateTellsOfABadRigAndFolder) {
  EXPECT_EQ(run_here("simulate masks " + file("none.json") + " " + file("x")).code, 2);
  EXPECT_EQ(run_here("simulate world " + file("rig.cal") + " " + file("x")).code, 4);
  rig_description rig;
  const camera_details details{32, 24, 90, 0};
  rig.cameras.push_back({details, initial_model(details)});
  rig.cameras.push_back(rig.cameras[0]);
  ASSERT_EQ(write_rig_file(rig, file("rig.json")), "");
  const tool_run got = run_here("simulate masks " + file("rig.json") + " " + file("rig.cal"));
  EXPECT_EQ(got.code, 3);
  EXPECT_NE(got.err.find("can't be made"), std::string::npos) << got.err;
}

}  // namespace
}  // namespace ocpan

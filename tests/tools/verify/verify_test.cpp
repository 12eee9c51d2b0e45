#include <cstdint>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include "tests/tools/camera_text.h"
#include "tests/tools/tool_process.h"
#include "tools/verify/table_manifest.h"

namespace ocpan {
namespace {

using testing::camera_text;
using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;
namespace fs = std::filesystem;

class verify : public ::testing::Test {
 protected:
  verify() {
    write_file(file("rig.cal"), camera_text);
    cv::imwrite(file("mask_0.png"), cv::Mat(30, 40, CV_8UC1, cv::Scalar(255)));
  }
  std::string file(const std::string& name) const { return folder_.file(name); }
  void make() const {
    const std::string inputs = std::string(" ") + file("rig.cal") + " " + file("mask") + " ";
    ASSERT_EQ(run_here("lut" + inputs + file("lut") + " --radius 5").code, 0);
    ASSERT_EQ(run_here("poly" + inputs + file("poly") + " --radius 5").code, 0);
  }
  tool_run run(const std::string& more = "") const {
    return run_here("verify " + file("lut") + " " + file("rig.cal") + " " + file("mask") + " " +
                    more);
  }
  static bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }
  // Changes a byte of a file.
  void damage(const std::string& name, std::size_t at) const {
    std::string bytes = read_file(file(name));
    bytes.at(at) = static_cast<char>(bytes.at(at) ^ 1);
    write_file(file(name), bytes);
  }

 private:
  temp_folder folder_;
};

TEST_F(verify, LutAndPolyLeaveManifests) {
  make();
  std::string problem;
  const auto lut = read_manifest(file("lut"), problem);
  ASSERT_TRUE(lut) << problem;
  EXPECT_EQ(lut->maker, "lut");
  EXPECT_EQ(lut->radius, 5);
  EXPECT_EQ(lut->face_size, 253);
  EXPECT_FALSE(lut->project_file);
  EXPECT_EQ(lut->calibration.checksum.size, camera_text.size());
  ASSERT_EQ(lut->outputs.size(), 1u);
  EXPECT_EQ(lut->outputs[0].checksum.size, 4194304u);
  const auto poly = read_manifest(file("poly"), problem);
  ASSERT_TRUE(poly) << problem;
  EXPECT_EQ(poly->maker, "poly");
  ASSERT_EQ(poly->outputs.size(), 1u);
  EXPECT_EQ(poly->outputs[0].checksum.size, 1536u);
}

TEST_F(verify, GoodTablesAreGood) {
  make();
  const tool_run got = run("--polygons " + file("poly"));
  EXPECT_EQ(got.code, 0) << got.out << got.err;
  EXPECT_TRUE(has(got.out, "radius 5.000, face 253, by the manifest\n")) << got.out;
  EXPECT_TRUE(has(got.out, "camera 0: positions fit, weights fit, covers")) << got.out;
  EXPECT_TRUE(has(got.out, "polygon encloses its weights\n")) << got.out;
  EXPECT_TRUE(has(got.out, "\nverdict: good\n")) << got.out;
  EXPECT_EQ(run("-q").out, "verdict: good\n");
}

TEST_F(verify, ATruncatedTableIsNamed) {
  make();
  write_file(file("lut_0.bin"), read_file(file("lut_0.bin")).substr(0, 4000000));
  const tool_run got = run("-q");
  EXPECT_EQ(got.code, 11);
  EXPECT_TRUE(has(got.out, "unusable: " + file("lut_0.bin") + " isn't 4194304 bytes long"))
      << got.out;
  EXPECT_TRUE(has(got.out, "doubtful: " + file("lut_0.bin") + " isn't the file that oc_pan lut"))
      << got.out;
}

TEST_F(verify, AMissingTableIsNamed) {
  make();
  fs::remove(file("lut_0.bin"));
  const tool_run got = run("-q");
  EXPECT_EQ(got.code, 11);
  EXPECT_TRUE(has(got.out, "unusable: " + file("lut_0.bin") + " can't be opened")) << got.out;
}

TEST_F(verify, AFilledSlotIsNamed) {
  make();
  damage("lut_0.bin", 8 * 3072);
  const tool_run got = run("-q");
  EXPECT_EQ(got.code, 11);
  EXPECT_TRUE(has(got.out, "1 entry of the slots that must be empty")) << got.out;
}

TEST_F(verify, APositionTwoStepsOffIsNamedAndOneStepIsNot) {
  make();
  fs::remove(file("lut_manifest.json"));
  const std::string good = read_file(file("lut_0.bin"));
  for (const int steps : {1, 2}) {
    std::string bytes = good;
    std::uint64_t entry = 0;
    for (std::size_t i = 8; i-- > 0;) entry = entry << 8 | static_cast<unsigned char>(bytes[i]);
    entry += static_cast<std::uint64_t>(steps) << 37;
    for (std::size_t i = 0; i < 8; ++i) bytes[i] = static_cast<char>(entry >> (8 * i) & 255);
    write_file(file("lut_0.bin"), bytes);
    const tool_run got = run("-q --radius 5");
    EXPECT_EQ(got.code, steps == 1 ? 0 : 10) << got.out;
    EXPECT_EQ(has(got.out, "1 position aren't those of the calibration"), steps == 2) << got.out;
  }
}

TEST_F(verify, ATableOfAnotherCameraCountIsNamed) {
  make();
  fs::copy_file(file("lut_0.bin"), file("lut_4.bin"));
  const tool_run got = run("-q");
  EXPECT_EQ(got.code, 10);
  EXPECT_TRUE(has(got.out, file("lut_4.bin") + " is of a camera that the calibration doesn't have"))
      << got.out;
}

TEST_F(verify, TablesAndPolygonsOfDifferentRadiiAreNamed) {
  make();
  ASSERT_EQ(run_here("poly " + file("rig.cal") + " " + file("mask") + " " + file("poly")).code, 0);
  const tool_run got = run("-q --polygons " + file("poly"));
  EXPECT_EQ(got.code, 10);
  EXPECT_TRUE(has(got.out, "tables and polygons were made with different radii")) << got.out;
}

TEST_F(verify, ADamagedManifestIsNamed) {
  make();
  write_file(file("lut_manifest.json"), "{\"maker\": 3}");
  const tool_run got = run("-q --radius 5");
  EXPECT_EQ(got.code, 10);
  EXPECT_TRUE(has(got.out, file("lut_manifest.json") + " is no manifest")) << got.out;
}

TEST_F(verify, ABlackMaskIsNamed) {
  cv::imwrite(file("mask_0.png"), cv::Mat(30, 40, CV_8UC1, cv::Scalar(0)));
  ASSERT_EQ(run_here("lut " + file("rig.cal") + " " + file("mask") + " " + file("lut")).code, 0);
  const tool_run got = run("-q");
  EXPECT_EQ(got.code, 11);
  EXPECT_TRUE(has(got.out, "camera 0 has no weight anywhere")) << got.out;
}

TEST_F(verify, InputsThatCanNotBeReadGiveTheLibrarysCodes) {
  make();
  fs::rename(file("mask_0.png"), file("away.png"));
  const tool_run mask = run();
  EXPECT_EQ(mask.code, 4);
  EXPECT_TRUE(has(mask.err, file("mask_0.png") + " can't be used")) << mask.err;
  fs::rename(file("rig.cal"), file("away.cal"));
  EXPECT_EQ(run().code, 2);
  EXPECT_EQ(run("--json " + file("none/verified.json")).code, 3);
  EXPECT_EQ(run("--radius 0.4").code, 64);
}

TEST_F(verify, JsonDoesNotReplaceTheCalibration) {
  make();
  EXPECT_EQ(run("--json " + file("rig.cal")).code, 3);
  EXPECT_EQ(read_file(file("rig.cal")), camera_text);
}

TEST_F(verify, JsonHoldsTheVerdict) {
  make();
  EXPECT_EQ(run("--json " + file("verified.json")).code, 0);
  const auto json = nlohmann::json::parse(read_file(file("verified.json")));
  EXPECT_EQ(json.at("verdict"), "good");
  EXPECT_EQ(json.at("exit_code"), 0);
  EXPECT_EQ(json.at("cameras").size(), 1u);
}

}  // namespace
}  // namespace ocpan

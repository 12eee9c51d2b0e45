#include <filesystem>
#include <string>

#include "tests/exports/cal_fixture.h"
#include "tests/exports/table_run.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::table_run;
using testing::write_file;

// The header of a bitmap of 60,000 by 60,000 pixels of 24 bits, and little behind it.
std::string huge_bitmap() {
  std::string bytes("BM\x36\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x60\xea\0\0\x60\xea\0\0\1\0\x18\0",
                    30);
  bytes.resize(1000);
  return bytes;
}

std::string with_width(const std::string& width) {
  return "Width:" + width + " Height:100 Lens:0 Hfov:90\n" + testing::linear_model;
}

TEST(HostileSizes, AWidthOfTwoThousandMillionsIsNoMasks) {
  table_run run(with_width("2000000000"));
  run.set_mask(0, 255);
  EXPECT_EQ(run.lut(), OCPAN_INPUT);
  EXPECT_EQ(run.poly(), OCPAN_INPUT);
  EXPECT_EQ(run.output(0), "");
}

TEST(HostileSizes, AWidthBeyondAllIntegersIsNoMasks) {
  table_run run(with_width("99999999999999999999"));
  run.set_mask(0, 255);
  EXPECT_EQ(run.lut(), OCPAN_INPUT);
  EXPECT_EQ(run.poly(), OCPAN_INPUT);
}

TEST(HostileSizes, AWidthBelowOneIsRefused) {
  for (const char* width : {"0", "-1", "-2000000000"}) {
    table_run run(with_width(width));
    run.set_mask(0, 255);
    EXPECT_EQ(run.lut(), OCPAN_INVALID) << width;
    EXPECT_EQ(run.poly(), OCPAN_INVALID) << width;
  }
}

TEST(HostileSizes, AMaskThatClaimsMoreThanAnyMemoryIsNoMask) {
  table_run run(testing::linear_camera);
  write_file(run.mask_name(0), huge_bitmap());
  EXPECT_EQ(run.lut(), OCPAN_MALFORMED);
  EXPECT_EQ(run.poly(), OCPAN_MALFORMED);
}

TEST(HostileSizes, AMaskToTransformThatClaimsMoreThanAnyMemoryIsNoMask) {
  const testing::working_folder folder;
  write_file("huge.png", huge_bitmap());
  const char* const input = "huge.png";
  const char* const output = "weights.bin";
  EXPECT_EQ(ocPAN_MaskTransform(1, &input, &output), OCPAN_MALFORMED);
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST(HostileSizes, AnOverlayThatClaimsMoreThanAnyMemoryFails) {
  const testing::working_folder folder;
  write_file("huge.png", huge_bitmap());
  int result = 99;
  const std::string printed =
      testing::printed_by([&] { result = ocPAN_CreateOsd("huge.png", "overlay.png", 64, 64); });
  EXPECT_EQ(result, OCPAN_FAILURE);
  EXPECT_EQ(printed.substr(0, 20), "Unexpected failure: ");
  EXPECT_EQ(read_file("overlay.png"), "");
}

class HostileCal : public testing::Cal {};

TEST_F(HostileCal, ALineOfFiftyMillionCharactersIsReadThrough) {
  const std::string name(50'000'000, 'x');
  EXPECT_EQ(run_text("output_filename: '" + name + "'\n"), OCPAN_INVALID);  // without cameras
  EXPECT_EQ(run_text(name + "\n"), OCPAN_INVALID);
  EXPECT_EQ(run_text(name + ": 1\n"), OCPAN_INVALID);
  EXPECT_EQ(printed, "Unrecognised id: " + name + "\n");
}

TEST_F(HostileCal, ALineOfAMillionKeysIsReadThrough) {
  std::string cameras = "camera_info:\n  - ";
  for (int k = 0; k < 1'000'000; ++k) cameras += "width: 640, ";
  EXPECT_EQ(run_text(cameras + "height: 480, hfov: 70, lens: 0\n"), OCPAN_INVALID);
}

}  // namespace
}  // namespace ocpan
